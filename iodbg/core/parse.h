#pragma once
// Words of the command line as values. Each parser stores into its target or throws
// language::Refused with a line that says what would be right.

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/refused.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace iodbg {

/** Takes one word of the command line. */
using Parser = std::function<void(const std::string &word)>;

using language::Bytes;
using language::Mac;
using language::parseMac;
using language::parseNumber;

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
Parser text(std::string &target);
/** Stores the name of a file. */
Parser fileName(std::string &target);
Parser hex(Bytes &target);

} // namespace iodbg
