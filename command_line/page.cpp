#include "command_line/page.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace command_line {

namespace {

/** Where a word that is too long for a line can end: behind one of its choices, or anywhere. */
size_t endOfPart(const std::string &word, size_t width) {
    const size_t mark = word.find_last_of("|,", width - 1);
    return mark == std::string::npos ? width : mark + 1;
}

std::string layOutRow(const std::vector<std::string> &row, const std::vector<size_t> &widths) {
    std::vector<std::vector<std::string>> cells;
    size_t height = 0;
    for (size_t i = 0; i < row.size(); ++i) {
        cells.push_back(linesWithin(row[i], widths[i]));
        height = std::max(height, cells.back().size());
    }
    std::string text;
    for (size_t line = 0; line < height; ++line) {
        std::string joined;
        for (size_t i = 0; i < cells.size(); ++i)
            joined += padded(line < cells[i].size() ? cells[i][line] : "", widths[i] + kGap);
        text += withoutTrailingSpaces(joined) + "\n";
    }
    return text;
}

std::vector<size_t> naturalWidths(const Rows &rows) {
    std::vector<size_t> widths(rows[0].size());
    for (const auto &row : rows) {
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    return widths;
}

size_t lineWidth(const std::vector<size_t> &widths) {
    return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

Rows columnsOf(const Rows &rows, const std::vector<size_t> &columns) {
    Rows chosen;
    for (const auto &row : rows) {
        chosen.emplace_back();
        for (const size_t column : columns)
            chosen.back().push_back(row[column]);
    }
    return chosen;
}

} // namespace

std::string padded(const std::string &text, size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

std::string withoutTrailingSpaces(const std::string &line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::vector<std::string> linesWithin(std::string text, size_t width) {
    std::vector<std::string> lines;
    while (text.size() > width) {
        const size_t blank = text.rfind(' ', width);
        const bool hasBlank = blank != std::string::npos && blank > 0;
        const size_t end = hasBlank ? blank : endOfPart(text, width);
        lines.push_back(text.substr(0, end));
        text.erase(0, std::min(text.find_first_not_of(' ', end), text.size()));
    }
    if (!text.empty())
        lines.push_back(text);
    return lines;
}

std::string inLines(const std::string &text, size_t width) {
    std::string lines;
    std::istringstream paragraphs(text);
    for (std::string paragraph; std::getline(paragraphs, paragraph);) {
        for (const std::string &line : linesWithin(paragraph, width))
            lines += (lines.empty() ? "" : "\n") + line;
    }
    return lines;
}

std::string layOut(const Rows &rows, const std::vector<size_t> &widths) {
    std::string text;
    for (const auto &row : rows)
        text += layOutRow(row, widths);
    return text;
}

std::string inOneBlock(const Rows &rows) {
    std::vector<size_t> widths = naturalWidths(rows);
    while (lineWidth(widths) > kPageWidth)
        --*std::max_element(widths.begin(), widths.end());
    return layOut(rows, widths);
}

std::string inBlocks(const Rows &rows) {
    const std::vector<size_t> widths = naturalWidths(rows);
    std::string text;
    for (size_t next = 1; next < widths.size();) {
        std::vector<size_t> block = {0};
        size_t width = widths[0];
        do {
            width += kGap + widths[next];
            block.push_back(next++);
        } while (next < widths.size() && width + kGap + widths[next] <= kPageWidth);
        text += (text.empty() ? "" : "\n") + inOneBlock(columnsOf(rows, block));
    }
    return text;
}

} // namespace command_line
