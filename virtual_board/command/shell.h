#pragma once
// Words as shells take them.

#include <string>

namespace vboard {

/** A word in quotes, whatever it has in it. */
std::string shellQuoted(const std::string &word);
/** The same, in quotes only where it needs them. */
std::string shellWord(const std::string &word);

} // namespace vboard
