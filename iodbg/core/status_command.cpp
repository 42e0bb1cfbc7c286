// iodbg status: status codes in words.

#include "iodbg/core/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/core/status_table.h"

#include <optional>

namespace iodbg {

namespace {

Cell nameCell(const StatusText &status) {
    return status.name.empty() ? Cell{"(no name)", nullptr} : textCell(status.name);
}

Report describe(const StatusText &status) {
    Section section = {"", "", {}};
    section.add("status", "Status", numberCell(status.code));
    section.add("status_name", "Name", nameCell(status));
    section.add("meaning", "Meaning", textCell(status.meaning));
    section.add("next", "Next", textCell(status.next));
    return {{section}, {}};
}

Report list(const std::vector<StatusText> &statuses) {
    Table table = {
        "statuses",
        {{"status", "STATUS"}, {"status_name", "NAME"}, {"meaning", "MEANING"}, {"next", "NEXT"}},
        {}};
    for (const StatusText &status : statuses)
        table.rows.push_back({numberCell(status.code), nameCell(status), textCell(status.meaning),
                              textCell(status.next)});
    return {{table}, {}};
}

} // namespace

void addStatusCommand(Command &root) {
    const auto code = std::make_shared<std::optional<int32_t>>();
    Command &status = root.command("status", "Explain a status code, or list them all");
    status.optionalArgument("CODE", "The code; without it all codes", [code](const auto &word) {
        *code = parseNumber(word, INT32_MIN, INT32_MAX);
    });
    status.example("iodbg status").example("iodbg status 1017");
    status.does([code](Console &console) {
        return console.print(*code ? describe(explain(**code)) : list(allStatuses()));
    });
}

} // namespace iodbg
