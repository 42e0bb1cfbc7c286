#pragma once
// Words as devices keep and send them, whatever the machine's own byte order: the virtual board's
// own helpers, apart from the library's as all that it knows.

#include <cstdint>

namespace vb {

constexpr uint16_t loadBe16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

constexpr void storeBe16(uint8_t *bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

constexpr void storeLe16(uint8_t *bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value);
    bytes[1] = static_cast<uint8_t>(value >> 8);
}

constexpr uint32_t loadBe32(const uint8_t *bytes) {
    return uint32_t{loadBe16(bytes)} << 16 | loadBe16(bytes + 2);
}

constexpr void storeBe32(uint8_t *bytes, uint32_t value) {
    storeBe16(bytes, static_cast<uint16_t>(value >> 16));
    storeBe16(bytes + 2, static_cast<uint16_t>(value));
}

} // namespace vb
