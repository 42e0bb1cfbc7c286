#pragma once
// Words of the command line as values. Each parser stores into its target or throws
// std::invalid_argument with a line that says what would be right.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace iodbg {

/** Takes one word of the command line. */
using Parser = std::function<void(const std::string &word)>;

using Bytes = std::vector<uint8_t>;
using Mac = std::array<uint8_t, 6>;

/** A decimal number, or a hexadecimal one after 0x, from lowest to highest. */
int64_t parseNumber(const std::string &word, int64_t lowest, int64_t highest);
/** Bytes of two hexadecimal digits, with or without 0x before them. */
Bytes parseHexBytes(const std::string &word);
/** Six bytes with colons between them. */
Mac parseMac(const std::string &word);

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
