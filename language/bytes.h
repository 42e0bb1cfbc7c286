#pragma once
// Bytes and MAC addresses as people write them. Parsers throw Refused for other words.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace language {

using Bytes = std::vector<uint8_t>;
using ByteView = std::span<const uint8_t>;
using Mac = std::array<uint8_t, 6>;

/** Bytes of two hexadecimal digits, with or without 0x before them. */
Bytes parseBytes(const std::string &word);

/** Six bytes with colons between them. */
Mac parseMac(const std::string &word);

/** "00ff12" */
std::string hexText(ByteView bytes);

/** "00FF12", or with something between the bytes: "00:FF:12". */
std::string capitalHexText(ByteView bytes, const char *separator = "");

/** "02:00:5e:10:00:00" */
std::string macText(ByteView mac);

} // namespace language
