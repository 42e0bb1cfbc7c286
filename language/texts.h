#pragma once
// Texts that come from outside, as messages and reports show them.

#include "language/bytes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace language {

/** The text in a zero-padded field. Bytes that are not printable ASCII appear as \xNN. */
std::string fieldText(ByteView field);

/** The same of a text. */
std::string printable(const std::string &text);

/** The beginning of a text that is longer than this, with dots behind it. */
std::string shortened(const std::string &text, size_t longest);

/** A word of the user's or of a file's in a message: short, printable, between quotes. */
std::string quoted(const std::string &word);

/** The lines of a text, without their ends. */
std::vector<std::string> linesOf(const std::string &text);

/** Words in a sentence: "read, write or any". */
std::string listed(const std::vector<std::string> &words, const std::string &last);

} // namespace language
