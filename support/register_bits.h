#pragma once
// Bits and fields of 16-bit CPLD registers. A bit outside the register reads clear and changes
// nothing when it is written.

#include "support/board_map.h"

#include <cstdint>

namespace bsp {

constexpr bool isRegisterBit(int64_t bit) {
    return bit >= 0 && bit < 16;
}

constexpr bool hasBit(uint16_t reg, int64_t bit) {
    return isRegisterBit(bit) && (reg >> bit & 1) != 0;
}

/** The bits of a field, from its lowest bit on. */
constexpr uint16_t fieldMask(int64_t lowestBit, unsigned width) {
    if (!isRegisterBit(lowestBit))
        return 0;
    return static_cast<uint16_t>(((1u << width) - 1) << lowestBit);
}

/** What a field holds. */
constexpr uint32_t fieldOf(uint16_t reg, const CpldField &field) {
    return uint32_t{reg} >> field.lowestBit & ((1u << field.width) - 1);
}

/** A register with a field replaced. */
constexpr uint16_t withField(uint16_t reg, int64_t lowestBit, unsigned width, uint32_t value) {
    const uint16_t mask = fieldMask(lowestBit, width);
    const uint32_t bits = isRegisterBit(lowestBit) ? value << lowestBit : 0;
    return static_cast<uint16_t>((reg & ~mask) | (bits & mask));
}

} // namespace bsp
