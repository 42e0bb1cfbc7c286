#pragma once
// What the factory stores in the EEPROMs of a new unit.

#include "virtual_board/board/board.h"

#include <cstddef>

namespace vb {

/** CRC-32 of IEEE 802.3; of data in pieces when it is given what came out before. */
uint32_t crc32(const uint8_t *data, size_t length, uint32_t before = 0);

/** An erased EEPROM with the board's product information record. */
void writeBoardEeprom(Eeprom &eeprom, const Model &model, const FactoryData &factory);

constexpr uint32_t kFactorySerialSize = 32; // zero-filled; the last byte stays zero
constexpr uint32_t kFactoryMacSize = 6;

// The fields of the board's record that a production line sets. Setting one renews the checksum.
const uint8_t *factorySerial(const Eeprom &eeprom);
void setFactorySerial(Eeprom &eeprom, const char *serial);
const uint8_t *factoryMac(const Eeprom &eeprom);
void setFactoryMac(Eeprom &eeprom, const uint8_t (&mac)[kFactoryMacSize]);

/** An erased EEPROM with the record of supply index (counted from 0). */
void writeSupplyEeprom(Eeprom &eeprom, uint32_t index);

} // namespace vb
