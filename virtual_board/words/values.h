#pragma once
// Numbers and bytes as people write them.

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace vb {

/** Why a name or a value is refused: one line that says what would be right. */
class Refused : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** A number from 0 to max, decimal or hexadecimal with 0x; nothing for any other text. */
std::optional<uint32_t> parseNumber(const std::string &text, uint32_t max);

/** A number from min to max; other texts throw Refused, which says what of. */
int32_t numberFrom(int32_t min, int32_t max, const std::string &text, const std::string &what);

/** Which of some words a text is; others throw Refused. */
uint32_t wordIndex(const std::string &text, std::span<const char *const> words);

/** Pairs of hexadecimal digits, without anything between them; nothing for any other text. */
std::optional<std::vector<uint8_t>> parseHex(const std::string &text);
std::string hexText(const uint8_t *data, size_t length);

/** Six pairs of hexadecimal digits with colons: 02:00:5e:10:00:00. */
std::optional<std::vector<uint8_t>> parseMac(const std::string &text);
std::string macText(const uint8_t *mac);

/** A 16-bit value, as registers and models are written: 0x0709. */
std::string hex16Text(uint32_t value);

/** A time on the board's clock, in seconds with all nine decimals. */
std::string secondsText(uint64_t ns);

} // namespace vb
