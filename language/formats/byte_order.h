#pragma once
// Byte order of stored and transmitted formats, independent of the machine's own.

#include <cstdint>

namespace formats {

constexpr uint16_t loadBe16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

constexpr uint16_t loadLe16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[1] << 8 | bytes[0]);
}

constexpr uint32_t loadBe32(const uint8_t *bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

constexpr void storeBe16(uint8_t *bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

constexpr void storeBe32(uint8_t *bytes, uint32_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 24);
    bytes[1] = static_cast<uint8_t>(value >> 16);
    bytes[2] = static_cast<uint8_t>(value >> 8);
    bytes[3] = static_cast<uint8_t>(value);
}

} // namespace formats
