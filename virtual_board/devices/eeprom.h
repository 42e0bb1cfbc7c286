#pragma once
// A serial EEPROM of the 24C family: blocks of 256 bytes, each at a bus address of its own.

#include <cstdint>

namespace vb {

constexpr uint32_t kEepromBlockSize = 256;
constexpr uint32_t kEepromMaxBlocks = 4;
constexpr uint32_t kEepromPageSize = 16;
constexpr uint32_t kEepromMaxBytes = kEepromBlockSize * kEepromMaxBlocks;

/** The world's face: what is stored. */
struct Eeprom {
    uint32_t blocks;
    uint8_t bytes[kEepromMaxBytes];
};

constexpr uint32_t eepromSize(const Eeprom &eeprom) {
    return eeprom.blocks * kEepromBlockSize;
}

/** A sequential read; the address counter rolls over from the last byte of the chip to the first.
 */
void eepromRead(const Eeprom &eeprom, uint32_t address, uint8_t *data, uint32_t length);

/** A page write; the address counter wraps inside the 16-byte page of the first byte. */
void eepromWrite(Eeprom &eeprom, uint32_t address, const uint8_t *data, uint32_t length);

} // namespace vb
