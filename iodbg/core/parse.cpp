#include "iodbg/core/parse.h"

#include "iodbg/core/format.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>

namespace iodbg {

namespace {

[[noreturn]] void refuse(const std::string &word, const std::string &reason) {
    throw std::invalid_argument(quoted(word) + " " + reason);
}

bool takePrefix(std::string_view &text, std::string_view prefix) {
    const bool hasPrefix = text.starts_with(prefix);
    if (hasPrefix)
        text.remove_prefix(prefix.size());
    return hasPrefix;
}

bool takeHexMark(std::string_view &text) {
    return takePrefix(text, "0x") || takePrefix(text, "0X");
}

/** The number that a text consists of; false when it is none or does not fit. */
template <typename Number>
bool readDigits(std::string_view digits, int base, Number &value) {
    const char *end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value, base);
    return error == std::errc() && rest == end;
}

/** "0.1" of 100 */
std::string shortSeconds(uint32_t milliseconds) {
    std::string text = thousandths(milliseconds);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

/** The byte of exactly two hexadecimal digits. */
bool readHexByte(std::string_view digits, uint8_t &byte) {
    return digits.size() == 2 && readDigits(digits, 16, byte);
}

} // namespace

int64_t parseNumber(const std::string &word, int64_t lowest, int64_t highest) {
    std::string_view digits = word;
    const bool isNegative = takePrefix(digits, "-");
    const int base = takeHexMark(digits) ? 16 : 10;
    uint32_t magnitude = 0;
    const bool isNumber = readDigits(digits, base, magnitude);
    const int64_t value = isNegative ? -int64_t{magnitude} : int64_t{magnitude};
    if (!isNumber || value < lowest || value > highest)
        refuse(word, "is not a number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest) + " (decimal, or hexadecimal after 0x)");
    return value;
}

Bytes parseHexBytes(const std::string &word) {
    std::string_view digits = word;
    takeHexMark(digits);
    if (digits.empty() || digits.size() % 2 != 0)
        refuse(word, "is not a row of bytes: give two hexadecimal digits for each");
    Bytes bytes(digits.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (!readHexByte(digits.substr(2 * i, 2), bytes[i]))
            refuse(word, "has other characters than hexadecimal digits");
    }
    return bytes;
}

Mac parseMac(const std::string &word) {
    constexpr size_t kStep = 3; // two digits and a colon
    Mac mac{};
    bool isMac = word.size() == kStep * mac.size() - 1;
    for (size_t i = 0; isMac && i < mac.size(); ++i) {
        const size_t at = kStep * i;
        isMac = readHexByte(std::string_view(word).substr(at, 2), mac[i]) &&
                (i == 0 || word[at - 1] == ':');
    }
    if (!isMac)
        refuse(word, "is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF");
    return mac;
}

Parser number(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 0, highest);
}

Parser numberFromOne(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 1, highest);
}

Parser numberWithin(uint32_t &target, uint32_t lowest, uint32_t highest) {
    return [&target, lowest, highest](const std::string &word) {
        target = static_cast<uint32_t>(parseNumber(word, lowest, highest));
    };
}

Parser seconds(uint32_t &milliseconds, uint32_t lowest, uint32_t highest) {
    return [&milliseconds, lowest, highest](const std::string &word) {
        constexpr size_t kDecimals = 3;
        const size_t point = std::min(word.find('.'), word.size());
        std::string digits = word.substr(0, point);
        std::string decimals = point < word.size() ? word.substr(point + 1) : "0";
        const bool hasShape = !digits.empty() && !decimals.empty() && decimals.size() <= kDecimals;
        decimals.resize(kDecimals, '0');
        uint32_t value = 0;
        if (!hasShape || !readDigits(std::string_view(digits += decimals), 10, value) ||
            value < lowest || value > highest)
            refuse(word, "is not a number of seconds from " + shortSeconds(lowest) + " to " +
                             shortSeconds(highest) + ", with up to three decimals");
        milliseconds = value;
    };
}

Parser oneOf(uint32_t &target, const std::vector<std::pair<std::string, uint32_t>> &words) {
    return [&target, words](const std::string &word) {
        std::string known;
        for (const auto &[name, value] : words) {
            if (word == name) {
                target = value;
                return;
            }
            known += (known.empty() ? "" : "|") + name;
        }
        refuse(word, "is none of " + known);
    };
}

Parser text(std::string &target) {
    return [&target](const std::string &word) { target = word; };
}

Parser fileName(std::string &target) {
    return [&target](const std::string &word) {
        if (word.empty())
            refuse(word, "is not the name of a file");
        target = word;
    };
}

Parser hex(Bytes &target) {
    return [&target](const std::string &word) { target = parseHexBytes(word); };
}

} // namespace iodbg
