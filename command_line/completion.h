#pragma once
// What may stand next on a command line.

#include "command_line/line.h"

namespace command_line {

/** Behind it and "--" a shell gives the words of a line; the last is the one to be completed. */
constexpr char kCompletionWord[] = "__complete";

/**
 * What may stand for the last of the words, a line each. A line that begins with a tab says where
 * else to look: "\tfiles", "\tfolders", or "\tprogram N" where the line of another program begins
 * at the word with a number, counted from 0.
 */
std::string completionsOf(Tool &tool, const std::vector<std::string> &words);

} // namespace command_line
