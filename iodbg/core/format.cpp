#include "iodbg/core/format.h"

#include <algorithm>
#include <cstdio>

namespace iodbg {

namespace {

constexpr size_t kDumpWidth = 16;

bool isPrintable(uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F;
}

std::string dumpLine(uint32_t offset, ByteView bytes) {
    std::string text = hexNumber(offset, 4) + "  " + language::capitalHexText(bytes, " ");
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
    return language::capitalHexText(bytes);
}

std::string macText(ByteView mac) {
    return language::capitalHexText(mac, ":");
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
