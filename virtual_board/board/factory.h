#pragma once
// What the factory stores in the EEPROMs of a new unit.

#include "virtual_board/board/board.h"

#include <cstddef>

namespace vb {

/** CRC-32 of IEEE 802.3. */
uint32_t crc32(const uint8_t *data, size_t length);

/** An erased EEPROM with the board's product information record. */
void writeBoardEeprom(Eeprom &eeprom, const Model &model, const FactoryData &factory);

/** An erased EEPROM with the record of supply index (counted from 0). */
void writeSupplyEeprom(Eeprom &eeprom, uint32_t index);

} // namespace vb
