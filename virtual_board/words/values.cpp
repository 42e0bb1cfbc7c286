#include "virtual_board/words/values.h"

#include <charconv>
#include <cstdio>

namespace vb {

namespace {

/** The whole text as a number of a base. */
template <typename Number>
std::optional<Number> parseDigits(const char *first, const char *last, int base) {
    Number number = 0;
    const auto [end, failure] = std::from_chars(first, last, number, base);
    if (failure != std::errc() || end != last)
        return std::nullopt;
    return number;
}

} // namespace

std::optional<uint32_t> parseNumber(const std::string &text, uint32_t max) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const char *last = text.data() + text.size();
    const auto number = parseDigits<uint32_t>(text.data() + (isHex ? 2 : 0), last, isHex ? 16 : 10);
    return number.has_value() && *number <= max ? number : std::nullopt;
}

int32_t numberFrom(int32_t min, int32_t max, const std::string &text, const std::string &what) {
    const auto number = parseDigits<int32_t>(text.data(), text.data() + text.size(), 10);
    if (!number.has_value() || *number < min || *number > max)
        throw Refused(what + " is " + std::to_string(min) + " to " + std::to_string(max) +
                      ", not '" + text + "'");
    return *number;
}

uint32_t wordIndex(const std::string &text, std::span<const char *const> words) {
    std::string choices;
    for (uint32_t index = 0; index < words.size(); ++index) {
        if (text == words[index])
            return index;
        choices += (index == 0 ? "'" : ", '") + std::string(words[index]) + "'";
    }
    throw Refused("give one of " + choices + ", not '" + text + "'");
}

std::optional<std::vector<uint8_t>> parseHex(const std::string &text) {
    if (text.empty() || text.size() % 2 != 0)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (const char *pair = text.data(); pair != text.data() + text.size(); pair += 2) {
        const auto byte = parseDigits<uint8_t>(pair, pair + 2, 16);
        if (!byte.has_value())
            return std::nullopt;
        bytes.push_back(*byte);
    }
    return bytes;
}

std::string hexText(const uint8_t *data, size_t length) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 0xF];
    }
    return text;
}

std::optional<std::vector<uint8_t>> parseMac(const std::string &text) {
    constexpr size_t kLength = 17;
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isSeparator = i % 3 == 2;
        if (isSeparator != (text[i] == ':'))
            return std::nullopt;
        if (!isSeparator)
            digits += text[i];
    }
    return text.size() == kLength ? parseHex(digits) : std::nullopt;
}

std::string macText(const uint8_t *mac) {
    std::string text = hexText(mac, 1);
    for (int i = 1; i < 6; ++i)
        text += ':' + hexText(mac + i, 1);
    return text;
}

std::string hex16Text(uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%04X", value);
    return text;
}

std::string secondsText(uint64_t ns) {
    constexpr uint64_t kNsPerSecond = 1000000000;
    char text[40];
    std::snprintf(text, sizeof(text), "%llu.%09llu",
                  static_cast<unsigned long long>(ns / kNsPerSecond),
                  static_cast<unsigned long long>(ns % kNsPerSecond));
    return text;
}

} // namespace vb
