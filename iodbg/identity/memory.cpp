#include "iodbg/identity/memory.h"

#include "bsp.h"

namespace iodbg {

std::string Carrier::word() const {
    return isBoard() ? "board" : "supply" + std::to_string(supply);
}

std::string Carrier::name() const {
    return isBoard() ? "the board" : "supply " + std::to_string(supply);
}

uint32_t Carrier::devinfoIndex() const {
    return isBoard() ? BSP_DEVINFO_BOARD : BSP_DEVINFO_SUPPLY_1 + supply - 1;
}

uint32_t Carrier::eepromSize() const {
    // A supply's record ends its EEPROM.
    return isBoard() ? BSP_EEPROM_SIZE : BSP_SUPPLY_RECORD_OFFSET + sizeof(BspSupplyRecord);
}

Parser carrier(Carrier &target) {
    const auto take = [&target](const std::string &word) {
        for (uint32_t supply = 0; supply <= BSP_FIXED_SUPPLIES; ++supply) {
            if (Carrier{supply}.word() != word)
                continue;
            target.supply = supply;
            return;
        }
        language::refuse(word, std::string("is none of ") + kCarrierWords);
    };
    return offering(kCarrierWords, take);
}

int32_t readEeprom(const Carrier &carrier, uint32_t offset, Bytes &buffer) {
    const auto length = static_cast<uint32_t>(buffer.size());
    return carrier.isBoard() ? bspLocalEepromRead(offset, buffer.data(), length)
                             : bspPowerEepromRead(carrier.supply, offset, buffer.data(), length);
}

int32_t writeEeprom(const Carrier &carrier, uint32_t offset, const Bytes &data) {
    const auto length = static_cast<uint32_t>(data.size());
    return carrier.isBoard() ? bspLocalEepromWrite(offset, data.data(), length)
                             : bspPowerEepromWrite(carrier.supply, offset, data.data(), length);
}

} // namespace iodbg
