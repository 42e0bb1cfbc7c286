#include "iodbg/core/report.h"

#include "bsp.h"
#include "command_line/page.h"
#include "iodbg/core/format.h"
#include "iodbg/core/status_table.h"

#include <algorithm>

namespace iodbg {

using namespace command_line;

namespace {

std::string toText(const Section &section) {
    size_t width = 0;
    for (const Field &field : section.fields)
        width = std::max(width, field.label.size());

    std::string text = section.title.empty() ? "" : section.title + "\n";
    const std::string indent = section.title.empty() ? "" : "  ";
    for (const Field &field : section.fields)
        text += layOut({{indent + field.label, field.cell.text}},
                       {indent.size() + width, kPageWidth - indent.size() - width - kGap});
    return text;
}

std::string toText(const Table &table) {
    if (table.rows.empty())
        return "";
    Rows rows(1);
    for (const Column &column : table.columns)
        rows[0].push_back(column.label);
    for (const std::vector<Cell> &row : table.rows) {
        rows.emplace_back();
        for (const Cell &cell : row)
            rows.back().push_back(cell.text);
    }
    return table.tooWide == TooWide::MoveColumns ? inBlocks(rows) : inOneBlock(rows);
}

/** A paragraph whose lines begin at a column, behind the first one further in. */
std::string paragraph(const std::string &text, size_t indent) {
    constexpr size_t kHanging = 4;
    std::string shown;
    for (const std::string &line : linesWithin(text, kPageWidth - indent - kHanging)) {
        const size_t margin = indent + (shown.empty() ? 0 : kHanging);
        shown += std::string(margin, ' ') + line + "\n";
    }
    return shown;
}

std::string toText(const FailedItem &failed) {
    const StatusText status = explain(failed.status);
    return paragraph(failed.item + ": " + nameAndNumber(failed.status) + ", " + status.meaning, 2) +
           paragraph("next: " + failed.advice, 4);
}

} // namespace

Cell textCell(const std::string &text) {
    return {text, text};
}

Cell numberCell(int64_t value) {
    return {std::to_string(value), value};
}

Cell hexCell(uint32_t value, int digits) {
    return {hexNumber(value, digits), int64_t{value}};
}

Cell flagCell(bool value, const std::string &ifTrue, const std::string &ifFalse) {
    return {value ? ifTrue : ifFalse, value};
}

Cell listCell(const std::vector<int64_t> &numbers) {
    std::string text;
    for (size_t first = 0, last = 0; first < numbers.size(); first = ++last) {
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1)
            ++last;
        text += (text.empty() ? "" : ", ") + std::to_string(numbers[first]);
        if (last > first)
            text += "-" + std::to_string(numbers[last]);
    }
    return {text.empty() ? "none" : text, numbers};
}

Cell Report::tried(const std::string &item, int32_t status, const Cell &cell,
                   const std::string &advice) {
    if (status == BSP_OK)
        return cell;
    failures.push_back({item, status, advice.empty() ? explain(status).next : advice});
    return {"failed: " + nameAndNumber(status), nullptr};
}

std::string Report::toText() const {
    std::string text;
    for (const auto &part : parts) {
        const std::string shown =
            std::visit([](const auto &content) { return iodbg::toText(content); }, part);
        text += (text.empty() || shown.empty() ? "" : "\n") + shown;
    }
    if (!failures.empty())
        text += "\nFailures\n";
    for (const FailedItem &failed : failures)
        text += iodbg::toText(failed);
    return text;
}

} // namespace iodbg
