#include "iodbg/core/format.h"

#include <algorithm>
#include <cstdio>

namespace iodbg {

namespace {

constexpr size_t kDumpWidth = 16;

std::string hexByte(uint8_t byte) {
    char text[3];
    std::snprintf(text, sizeof(text), "%02X", byte);
    return text;
}

bool isPrintable(uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F;
}

std::string joinedHex(ByteView bytes, const char *separator) {
    std::string text;
    for (const uint8_t byte : bytes)
        text += (text.empty() ? "" : separator) + hexByte(byte);
    return text;
}

std::string dumpLine(uint32_t offset, ByteView bytes) {
    std::string text = hexNumber(offset, 4) + "  " + joinedHex(bytes, " ");
    text += std::string((kDumpWidth - bytes.size()) * 3, ' ') + "  |";
    for (const uint8_t byte : bytes)
        text += isPrintable(byte) ? static_cast<char>(byte) : '.';
    return text + "|\n";
}

} // namespace

std::string hexNumber(uint32_t value, int digits) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%0*X", digits, value);
    return text;
}

std::string registerName(uint32_t reg) {
    return "CPLD register " + std::to_string(reg);
}

std::string hexBytes(ByteView bytes) {
    return joinedHex(bytes, "");
}

std::string macText(ByteView mac) {
    return joinedHex(mac, ":");
}

std::string fieldText(ByteView field) {
    std::string text;
    for (const uint8_t byte : field) {
        if (byte == 0)
            break;
        if (!isPrintable(byte))
            text += "\\x" + hexByte(byte);
        else if (byte == '\\')
            text += "\\\\";
        else
            text += static_cast<char>(byte);
    }
    return text;
}

std::string printable(const std::string &text) {
    return fieldText({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

std::string shortened(const std::string &text, size_t longest) {
    constexpr char kDots[] = "...";
    return text.size() <= longest ? text : text.substr(0, longest - sizeof(kDots) + 1) + kDots;
}

std::string quoted(const std::string &word) {
    constexpr size_t kLongest = 60;
    return "'" + shortened(printable(word), kLongest) + "'";
}

std::string thousandths(int64_t value) {
    const int64_t magnitude = value < 0 ? -value : value;
    const std::string fraction = std::to_string(1000 + magnitude % 1000).substr(1);
    return (value < 0 ? "-" : "") + std::to_string(magnitude / 1000) + "." + fraction;
}

std::string hexDump(uint32_t offset, ByteView bytes) {
    std::string text;
    for (size_t done = 0; done < bytes.size(); done += kDumpWidth) {
        const size_t length = std::min(kDumpWidth, bytes.size() - done);
        text += dumpLine(offset + static_cast<uint32_t>(done), bytes.subspan(done, length));
    }
    return text;
}

} // namespace iodbg
