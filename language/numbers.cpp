#include "language/numbers.h"

#include "language/digits.h"
#include "language/refused.h"

#include <cstdio>

namespace language {

std::optional<int64_t> readInteger(const std::string &word, int64_t lowest, int64_t highest) {
    std::string_view digits = word;
    const bool isNegative = digits.starts_with('-');
    digits.remove_prefix(isNegative ? 1 : 0);
    const int base = takeHexMark(digits) ? 16 : 10;
    uint32_t magnitude = 0;
    if (!readDigits(digits, base, magnitude))
        return std::nullopt;
    const int64_t value = isNegative ? -int64_t{magnitude} : int64_t{magnitude};
    return value >= lowest && value <= highest ? std::optional(value) : std::nullopt;
}

int64_t parseInteger(const std::string &word, int64_t lowest, int64_t highest) {
    const std::optional<int64_t> number = readInteger(word, lowest, highest);
    if (!number.has_value())
        refuse(word, "is not a number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest) + " (decimal, or hexadecimal after 0x)");
    return *number;
}

std::pair<uint32_t, uint32_t> parseRange(const std::string &word, uint32_t lowest, uint32_t highest,
                                         const std::string &things) {
    const size_t dash = word.find('-');
    const bool isOne = dash == std::string::npos;
    const bool isMore = !isOne && word.find('-', dash + 1) != std::string::npos;
    if (!isMore) {
        const auto first = parseNumber(word.substr(0, dash), lowest, highest);
        const auto last = isOne ? first : parseNumber(word.substr(dash + 1), lowest, highest);
        if (first <= last)
            return {first, last};
    }
    refuse(word, "is no range of " + things + "; give one as 1-8");
}

uint32_t parseChoice(const std::string &word, std::span<const char *const> choices) {
    std::string known;
    for (uint32_t index = 0; index < choices.size(); ++index) {
        if (word == choices[index])
            return index;
        known += (index == 0 ? "" : "|") + std::string(choices[index]);
    }
    refuse(word, "is none of " + known);
}

std::string hex16Text(uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%04X", value);
    return text;
}

std::string thousandths(int64_t value) {
    const int64_t magnitude = value < 0 ? -value : value;
    const std::string fraction = std::to_string(1000 + magnitude % 1000).substr(1);
    return (value < 0 ? "-" : "") + std::to_string(magnitude / 1000) + "." + fraction;
}

} // namespace language
