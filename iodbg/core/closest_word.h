#pragma once
// What somebody may have meant by a mistyped word.

#include <string>
#include <vector>

namespace iodbg {

/** The one of some words that a word is closest to; empty when none is close. */
std::string closestWord(const std::string &word, const std::vector<std::string> &known);

} // namespace iodbg
