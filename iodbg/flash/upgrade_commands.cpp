// iodbg upgrade: the images of the board.

#include "command_line/page.h"
#include "iodbg/core/confirm.h"
#include "iodbg/flash/commands.h"
#include "iodbg/flash/upgrade_parts.h"

namespace iodbg {

bool goOn(Section &section, const UpgradePlan &plan, const UpgradeArguments &arguments) {
    section.add("target", "Replaces", textCell(plan.what));
    section.add("before", "Now", textCell(plan.now));
    section.add("file", "New", textCell(plan.replacement));
    section.add("dry_run", "Dry run",
                flagCell(arguments.isDryRun, "yes, nothing was changed", "no"));
    if (!arguments.isDryRun && !arguments.isYes)
        confirm(plan.what + "\n  now  " + plan.now + "\n  new  " + plan.replacement + "\n" +
                inLines(plan.warning, kPageWidth) + "\nUpgrade it now?");
    return !arguments.isDryRun;
}

void addUpgradeArguments(Command &command, UpgradeArguments &arguments,
                         const std::string &fileHelp) {
    command.argument("FILE", fileHelp, fileName(arguments.file));
    command.flag("--dry-run", "Check the file and show what would be replaced", arguments.isDryRun);
    command.flag("--yes", kYesHelp, arguments.isYes);
    addSpoolOption(command, arguments.spool);
}

void addUpgradeCommands(Command &root) {
    root.group("upgrade", "Replace images of the board", [](Command &upgrade) {
        addUpgradeOs(upgrade);
        addUpgradeBoot(upgrade);
        addUpgradeCpld(upgrade);
    });
}

} // namespace iodbg
