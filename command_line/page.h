#pragma once
// Columns of text on a page of 80 characters, the same on every terminal and in every file.

#include <cstddef>
#include <string>
#include <vector>

namespace command_line {

constexpr size_t kPageWidth = 80;
constexpr size_t kGap = 2; // blanks between columns

std::string padded(const std::string &text, size_t width);
std::string withoutTrailingSpaces(const std::string &line);

/** A text in lines of so many characters, broken between words where it can be; none of an empty
 * one. */
std::vector<std::string> linesWithin(std::string text, size_t width);

/** The same as one text, whose own newlines stay. */
std::string inLines(const std::string &text, size_t width);

using Rows = std::vector<std::vector<std::string>>;

/** Rows in columns of these widths. A text that is longer goes on in its column below. */
std::string layOut(const Rows &rows, const std::vector<size_t> &widths);

/** The same with the widths that the texts need; the widest columns give what the page lacks. */
std::string inOneBlock(const Rows &rows);

/** Columns that the page has no room for stand in blocks below, each behind the first column. */
std::string inBlocks(const Rows &rows);

} // namespace command_line
