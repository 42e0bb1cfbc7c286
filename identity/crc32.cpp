// CRC-32 of IEEE 802.3, reflected, one table look-up per byte.

#include "bsp.h"

#include <array>

namespace {

constexpr std::array<uint32_t, 256> makeTable() {
    constexpr uint32_t kPolynomial = 0xEDB88320;
    std::array<uint32_t, 256> table{};
    for (uint32_t index = 0; index < table.size(); ++index) {
        uint32_t value = index;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) != 0 ? (value >> 1) ^ kPolynomial : value >> 1;
        table[index] = value;
    }
    return table;
}

constexpr std::array<uint32_t, 256> kTable = makeTable();

} // namespace

uint32_t bsp_crc32_cal(uint32_t crc, const uint8_t *buf, uint32_t len) {
    if (buf == nullptr)
        return 0;
    uint32_t value = ~crc;
    for (uint32_t i = 0; i < len; ++i)
        value = kTable[(value ^ buf[i]) & 0xFF] ^ (value >> 8);
    return ~value;
}
