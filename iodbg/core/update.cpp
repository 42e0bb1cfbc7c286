#include "iodbg/core/update.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"

#include <algorithm>

namespace iodbg {

namespace {

void writeAndVerify(const Update &update) {
    if (const int32_t status = update.write(); status != BSP_OK)
        throw Failure::board("write " + update.name, status,
                             "it may be half written: " + update.repair);
    Bytes after(update.wanted.size());
    if (const int32_t status = update.readBack(after); status != BSP_OK)
        throw Failure::board("read back " + update.name, status,
                             "it is not known what is stored: " + update.repair);
    const auto [wanted, stored] =
        std::mismatch(update.wanted.begin(), update.wanted.end(), after.begin());
    if (wanted != update.wanted.end())
        throw Failure(ExitCode::ReadBack, update.name + " reads back differently: byte " +
                                              std::to_string(wanted - update.wanted.begin()) +
                                              " of what was written is " + hexNumber(*stored, 2) +
                                              " instead of " + hexNumber(*wanted, 2) + "; " +
                                              update.repair);
}

std::string outcome(bool hasChanges, bool isDryRun) {
    if (!hasChanges)
        return "nothing to change";
    return isDryRun ? "dry run, nothing was changed" : "written and read back";
}

Table tableOf(const std::vector<Change> &changes) {
    Table table = {"changes", {{"item", "ITEM"}, {"before", "BEFORE"}, {"after", "AFTER"}}, {}};
    for (const Change &change : changes)
        table.rows.push_back(
            {textCell(change.item), textCell(change.before), textCell(change.after)});
    return table;
}

} // namespace

ExitCode carryOut(Console &console, const Update &update, const std::vector<Change> &changes,
                  bool isDryRun) {
    const bool hasChanges = update.before != update.wanted;
    if (hasChanges && !isDryRun)
        writeAndVerify(update);

    Section section = {"", "", {}};
    section.add("target", "Target", textCell(update.name));
    section.add("dry_run", "Dry run", flagCell(isDryRun, "yes", "no"));
    section.add("changed", "Changed", flagCell(hasChanges && !isDryRun, "yes", "no"));
    const Table table = tableOf(changes);
    const std::string result = update.name + ": " + outcome(hasChanges, isDryRun) + "\n";
    return console.print({{section, table}, {}},
                         hasChanges ? result + Report{{table}, {}}.toText() : result);
}

} // namespace iodbg
