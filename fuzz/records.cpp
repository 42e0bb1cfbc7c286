// Product records of the board and of its supplies in EEPROMs that hold anything. What is stored is
// read again.

#include "bsp.h"
#include "fuzz/hostile_system.h"
#include "fuzz/models.h"
#include "language/formats/product_record.h"

namespace {

using fuzz::Input;
using fuzz::require;

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
    require(bspSerialNumGet(serial, &length) != BSP_OK || length <= sizeof(serial),
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

void storeSerialNumber(const std::string &serial) {
    if (bspSerialNumSet(serial.data(), static_cast<int32_t>(serial.size())) != BSP_OK)
        return;
    require(serial.size() <= BSP_SERIAL_NUMBER_MAX, "a serial number that does not fit");
    char stored[BSP_SERIAL_NUMBER_BUFFER] = {};
    uint32_t length = 0;
    require(bspSerialNumGet(stored, &length) == BSP_OK &&
                std::string(stored, length) == serial.substr(0, std::strlen(serial.c_str())),
            "another serial number is read");
}

void storeMacAddress(Input &input) {
    uint8_t mac[BSP_MAC_LENGTH];
    input.fill(mac, sizeof(mac));
    if (bspMacAddrSet(0, mac) != BSP_OK)
        return;
    uint8_t stored[BSP_MAC_LENGTH] = {};
    require(bspMacAddrGet(BSP_MAC_BASE, stored) == BSP_OK && std::equal(mac, std::end(mac), stored),
            "another MAC address is read");
}

void storeSupplyRecord(Input &input) {
    const uint32_t supply = input.below(4);
    BspSupplyRecord record;
    input.fill(&record, sizeof(record));
    if (bspPowerPieSet(supply, &record) != BSP_OK)
        return;
    BspSupplyRecord stored{};
    require(bspPowerPieGet(supply, &stored) == BSP_OK &&
                std::memcmp(&record, &stored, sizeof(record)) == 0,
            "another supply's record is read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    Input input(bytes, size);
    hostile::System system(input);
    system.canFail = false;
    system.devId = fuzz::anyModel(input);
    system.eeprom = eepromOf(input);
    readAll();
    storeSerialNumber(input.line());
    storeMacAddress(input);
    storeSupplyRecord(input);
    readAll();
    return 0;
}
