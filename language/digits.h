#pragma once
// Digits, of which numbers and bytes are made.

#include <charconv>
#include <string_view>

namespace language {

/** The number that a text consists of; false when it is none or does not fit. */
template <typename Number>
bool readDigits(std::string_view digits, int base, Number &value) {
    const char *end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value, base);
    return error == std::errc() && rest == end;
}

/** Takes "0x" from the front of a text; false when it is not there. */
inline bool takeHexMark(std::string_view &text) {
    const bool hasMark = text.starts_with("0x") || text.starts_with("0X");
    if (hasMark)
        text.remove_prefix(2);
    return hasMark;
}

} // namespace language
