#include "language/bytes.h"

#include "language/digits.h"
#include "language/refused.h"

namespace language {

namespace {

/** The byte of exactly two hexadecimal digits. */
bool readByte(std::string_view digits, uint8_t &byte) {
    return digits.size() == 2 && readDigits(digits, 16, byte);
}

std::string joined(ByteView bytes, const char *digits, const char *separator) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += text.empty() ? "" : separator;
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

constexpr char kSmallDigits[] = "0123456789abcdef";
constexpr char kCapitalDigits[] = "0123456789ABCDEF";

} // namespace

Bytes parseBytes(const std::string &word) {
    std::string_view digits = word;
    takeHexMark(digits);
    if (digits.empty() || digits.size() % 2 != 0)
        refuse(word, "is not a row of bytes: give two hexadecimal digits for each");
    Bytes bytes(digits.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (!readByte(digits.substr(2 * i, 2), bytes[i]))
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
        isMac = readByte(std::string_view(word).substr(at, 2), mac[i]) &&
                (i == 0 || word[at - 1] == ':');
    }
    if (!isMac)
        refuse(word, "is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF");
    return mac;
}

std::string hexText(ByteView bytes) {
    return joined(bytes, kSmallDigits, "");
}

std::string capitalHexText(ByteView bytes, const char *separator) {
    return joined(bytes, kCapitalDigits, separator);
}

std::string macText(ByteView mac) {
    return joined(mac, kSmallDigits, ":");
}

} // namespace language
