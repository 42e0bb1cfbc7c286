#pragma once
// Numbers and choices as people write them. Parsers throw Refused for other words.

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace language {

/** A decimal number, or a hexadecimal one after 0x, from lowest to highest; nothing for others. */
std::optional<int64_t> readInteger(const std::string &word, int64_t lowest, int64_t highest);
int64_t parseInteger(const std::string &word, int64_t lowest, int64_t highest);

// The same in the type that is asked for.
template <std::integral Number>
std::optional<Number> readNumber(const std::string &word, Number lowest, Number highest) {
    const std::optional<int64_t> number = readInteger(word, lowest, highest);
    return number.has_value() ? std::optional(static_cast<Number>(*number)) : std::nullopt;
}

template <std::integral Number>
Number parseNumber(const std::string &word, Number lowest, Number highest) {
    return static_cast<Number>(parseInteger(word, lowest, highest));
}

/** The first and the last of a range: "3-8", or "3" alone; of things as "ports" are. */
std::pair<uint32_t, uint32_t> parseRange(const std::string &word, uint32_t lowest, uint32_t highest,
                                         const std::string &things);

/** Which of some words one is. */
uint32_t parseChoice(const std::string &word, std::span<const char *const> choices);

/** "0x0709": a register, a model. */
std::string hex16Text(uint32_t value);

/** "54.000" of 54000 */
std::string thousandths(int64_t value);

} // namespace language
