#pragma once
// CRC-32 of IEEE 802.3, reflected, one table look-up per byte.

#include <array>
#include <cstdint>

namespace formats {

/** A polynomial, its highest power in the lowest bit, by x, modulo that of the CRC. */
constexpr uint32_t crcTimesX(uint32_t value) {
    constexpr uint32_t kPolynomial = 0xEDB88320;
    return (value & 1) != 0 ? (value >> 1) ^ kPolynomial : value >> 1;
}

constexpr std::array<uint32_t, 256> makeCrcTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t index = 0; index < table.size(); ++index) {
        uint32_t value = index;
        for (int bit = 0; bit < 8; ++bit)
            value = crcTimesX(value);
        table[index] = value;
    }
    return table;
}

inline constexpr std::array<uint32_t, 256> kCrcTable = makeCrcTable();

/** The CRC of data. The one before is 0, or that of the data in front. */
[[gnu::noinline]] inline uint32_t crc32(uint32_t before, const uint8_t *data, uint32_t length) {
    uint32_t value = ~before;
    for (uint32_t i = 0; i < length; ++i)
        value = kCrcTable[(value ^ data[i]) & 0xFF] ^ (value >> 8);
    return ~value;
}

} // namespace formats
