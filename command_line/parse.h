#pragma once
// Words of the command line as values. Each parser stores into its target or throws
// language::Refused with a line that says what would be right.

#include "command_line/word.h"
#include "language/bytes.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace command_line {

/** The same parser, for which completion offers words: "on|off". */
Parser offering(const std::string &choices, Parser parser,
                Offers::Files files = Offers::Files::None);

/** Stores a number from 0 to highest. */
Parser number(uint32_t &target, uint32_t highest = UINT32_MAX);
/** Stores a number that is at least 1: of a port, a supply. */
Parser numberFromOne(uint32_t &target, uint32_t highest = UINT32_MAX);
/** A number from lowest to highest. */
Parser numberWithin(uint32_t &target, uint32_t lowest, uint32_t highest);
/** Stores seconds as milliseconds: "2", "0.5", with up to three decimals. */
Parser seconds(uint32_t &milliseconds, uint32_t lowest, uint32_t highest);
/** One of some words, each of which stands for a number. */
Parser oneOf(uint32_t &target, const std::vector<std::pair<std::string, uint32_t>> &words);
/** One of some words, as it is. */
Parser oneOf(std::string &target, const std::vector<const char *> &words);
Parser text(std::string &target);
/** Stores the name of a file. */
Parser fileName(std::string &target);
Parser hex(language::Bytes &target);

} // namespace command_line
