// Product records of the board and of its supplies in EEPROMs that hold anything. What is stored is
// read again.

#include "bsp.h"
#include "fuzz/hostile_system.h"
#include "fuzz/models.h"
#include "language/formats/product_record.h"

namespace {

using fuzz::Input;

/** An EEPROM of the input's bytes, in whose record magic and checksum may be right. */
hostile::Bytes eepromOf(Input &input) {
    hostile::Bytes eeprom(BSP_EEPROM_SIZE, 0xFF);
    const bool hasMagic = input.byte() % 8 != 0;
    const bool hasChecksum = input.byte() % 8 != 0;
    uint8_t *record = eeprom.data() + BSP_DEVINFO_OFFSET;
    input.fill(record, formats::kBoardRecordSize);
    if (hasMagic)
        std::memcpy(record, formats::kBoardRecordMagic, sizeof(formats::kBoardRecordMagic));
    if (hasChecksum)
        formats::renewRecordCrc(record);
    return eeprom;
}

void readAll() {
    BspDevinfo record{};
    bspDevinfoGet(0, &record);
    uint8_t mac[BSP_MAC_LENGTH] = {};
    bspMacAddrGet(0, mac);
    bspMacAddrGet(1, mac);
    char serial[BSP_SERIAL_NUMBER_BUFFER] = {};
    uint32_t length = 0;
    fuzz::require(bspSerialNumGet(serial, &length) != BSP_OK || length <= sizeof(serial),
                  "a serial number that is longer than its buffer");
    int32_t supplies = 0;
    bspPowerNumGet(&supplies);
    for (int32_t index = -1; index <= BSP_SUPPLIES_MAX + 1; ++index) {
        int32_t type = 0;
        bspPowerTypeGet(index, &type);
        bspPowerStatusGet(index, &type);
        BspSupplyRecord supply{};
        bspPowerPieGet(static_cast<uint32_t>(index), &supply);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    Input input(bytes, size);
    hostile::System system(input);
    system.canFail = false;
    system.devId = fuzz::anyModel(input);
    system.eeprom = eepromOf(input);
    readAll();
    const std::string serial = input.line();
    if (bspSerialNumSet(serial.data(), static_cast<int32_t>(serial.size())) == BSP_OK)
        fuzz::require(serial.size() <= BSP_SERIAL_NUMBER_MAX, "a serial number that does not fit");
    return 0;
}
