#include "virtual_board/board/factory.h"

#include "virtual_board/devices/byte_order.h"

#include <cstdio>
#include <cstring>

namespace vb {

namespace {

constexpr uint8_t kErased = 0xFF;

// The board's record: 128 bytes behind the first block.
constexpr uint32_t kRecordStart = 256;
constexpr uint32_t kRecordMac = 10;
constexpr uint32_t kRecordProductCode = 16;
constexpr uint32_t kRecordProductName = 32;
constexpr uint32_t kRecordSerial = 64;
constexpr uint32_t kRecordSupplyCount = 96;
constexpr uint32_t kRecordSupplyTypes = 97;
constexpr uint32_t kRecordCrc = 124;

// A supply's record: the last 80 bytes of its only block.
constexpr uint32_t kSupplyRecordStart = 176;
constexpr uint32_t kSupplyRecordSize = 80;
constexpr uint32_t kSupplyProductName = 0;
constexpr uint32_t kSupplySerial = 40;
constexpr uint32_t kSupplyProductCode = 64;

void storeText(uint8_t *field, const char *text, size_t size) {
    std::memcpy(field, text, strnlen(text, size));
}

void erase(Eeprom &eeprom, uint32_t blocks) {
    eeprom.blocks = blocks;
    std::memset(eeprom.bytes, kErased, sizeof(eeprom.bytes));
}

void renewCrc(Eeprom &eeprom) {
    uint8_t *record = eeprom.bytes + kRecordStart;
    storeBe32(record + kRecordCrc, crc32(record, kRecordCrc));
}

} // namespace

uint32_t crc32(const uint8_t *data, size_t length, uint32_t before) {
    uint32_t value = ~before;
    for (size_t i = 0; i < length; ++i) {
        value ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~value;
}

const uint8_t *factorySerial(const Eeprom &eeprom) {
    return eeprom.bytes + kRecordStart + kRecordSerial;
}

void setFactorySerial(Eeprom &eeprom, const char *serial) {
    uint8_t *field = eeprom.bytes + kRecordStart + kRecordSerial;
    std::memset(field, 0, kFactorySerialSize);
    storeText(field, serial, kFactorySerialSize - 1);
    renewCrc(eeprom);
}

const uint8_t *factoryMac(const Eeprom &eeprom) {
    return eeprom.bytes + kRecordStart + kRecordMac;
}

void setFactoryMac(Eeprom &eeprom, const uint8_t (&mac)[kFactoryMacSize]) {
    std::memcpy(eeprom.bytes + kRecordStart + kRecordMac, mac, sizeof(mac));
    renewCrc(eeprom);
}

void writeBoardEeprom(Eeprom &eeprom, const Model &model, const FactoryData &factory) {
    erase(eeprom, kEepromMaxBlocks);
    uint8_t *record = eeprom.bytes + kRecordStart;
    std::memset(record, 0, kRecordCrc);
    storeText(record, "DEVINFO", 7);
    char name[32];
    std::snprintf(name, sizeof(name), "SWITCH-%04X", model.devId);
    storeText(record + kRecordProductName, name, sizeof(name));
    storeText(record + kRecordProductCode, "VIRTUAL", 16);
    record[kRecordSupplyCount] = kSupplies;
    std::memset(record + kRecordSupplyTypes, 1, kSupplies);
    setFactorySerial(eeprom, factory.serial);
    setFactoryMac(eeprom, factory.mac);
}

void writeSupplyEeprom(Eeprom &eeprom, uint32_t index) {
    erase(eeprom, 1);
    uint8_t *record = eeprom.bytes + kSupplyRecordStart;
    std::memset(record, 0, kSupplyRecordSize);
    storeText(record + kSupplyProductName, "AC SUPPLY 54V", 32);
    storeText(record + kSupplyProductCode, "VIRTUAL", 16);
    char serial[24];
    std::snprintf(serial, sizeof(serial), "PSU%07u", index + 1);
    storeText(record + kSupplySerial, serial, sizeof(serial));
}

} // namespace vb
