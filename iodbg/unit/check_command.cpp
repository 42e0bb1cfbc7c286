// iodbg check: judges the whole unit.

#include "command_line/page.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/flash/boot_block.h"
#include "iodbg/unit/commands.h"
#include "iodbg/unit/health.h"

#include <string>

namespace iodbg {

namespace {

std::string textOf(const Findings &findings, const Section &summary) {
    std::string text;
    for (const FindingLine &line : findingLines(findings, kPageWidth))
        text += line.text + "\n";
    return text + "\n" + Report{{summary}, {}}.toText();
}

ExitCode check(Console &console) {
    requireBoard();
    const Findings findings = unitFindings();
    Section summary = {"", "", {}};
    const int64_t faults = countOf(findings, Severity::Fault);
    summary.add("faults", "Faults", numberCell(faults));
    summary.add("warnings", "Warnings", numberCell(countOf(findings, Severity::Warning)));
    summary.add("not_judged", "Not judged", numberCell(countOf(findings, Severity::NotJudged)));
    console.print({{findingsTable(findings), summary}, {}}, textOf(findings, summary));
    return faults == 0 ? ExitCode::Ok : ExitCode::Faulty;
}

} // namespace

void addCheckCommand(Command &root) {
    takesCapturedUnit(
        root.command("check",
                     "Judge the whole unit: what is wrong and what to do.\nExit code 5 when "
                     "there is a fault; warnings alone are 0"))
        .detail("What hangs on something that is wrong is not judged, and says on what it hangs.")
        .example("iodbg check")
        .example("iodbg check --json")
        .does(check);
}

} // namespace iodbg
