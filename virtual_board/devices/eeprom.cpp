#include "virtual_board/devices/eeprom.h"

namespace vb {

void eepromRead(const Eeprom &eeprom, uint32_t address, uint8_t *data, uint32_t length) {
    for (uint32_t i = 0; i < length; ++i)
        data[i] = eeprom.bytes[(address + i) % eepromSize(eeprom)];
}

void eepromWrite(Eeprom &eeprom, uint32_t address, const uint8_t *data, uint32_t length) {
    const uint32_t page = address / kEepromPageSize * kEepromPageSize;
    for (uint32_t i = 0; i < length; ++i)
        eeprom.bytes[page + (address + i) % kEepromPageSize] = data[i];
}

} // namespace vb
