#pragma once
// What somebody may have meant by a mistyped word.

#include <string>
#include <vector>

namespace command_line {

/** The one of some words that a word is closest to; empty when none is close. */
std::string closestWord(const std::string &word, const std::vector<std::string> &known);

} // namespace command_line
