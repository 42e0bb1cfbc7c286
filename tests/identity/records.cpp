#include "tests/identity/records.h"

#include "virtual_board/board/factory.h"

namespace {

// Where the records lie, in numbers of this test's own.
constexpr uint32_t kBoardRecord = 0x100;
constexpr uint32_t kSupplyRecord = 0xB0;

} // namespace

BspDevinfo numberedBoardRecord() {
    auto record = numbered<BspDevinfo>(1);
    std::memcpy(&record, "DEVINFO", 8);
    seal(record);
    return record;
}

// With the virtual board's CRC, not with the library's.
void seal(BspDevinfo &record) {
    auto *bytes = reinterpret_cast<uint8_t *>(&record);
    const uint32_t crc = vb::crc32(bytes, 124);
    for (unsigned i = 0; i < 4; ++i)
        bytes[124 + i] = static_cast<uint8_t>(crc >> (24 - 8 * i));
}

Bytes bytesAt(const vb::Eeprom &eeprom, uint32_t offset, uint32_t count) {
    return {eeprom.bytes + offset, eeprom.bytes + offset + count};
}

Bytes boardRecordIn(const vb::Eeprom &eeprom) {
    return bytesAt(eeprom, kBoardRecord, 128);
}

Bytes supplyRecordIn(const vb::Eeprom &eeprom) {
    return bytesAt(eeprom, kSupplyRecord, 80);
}

void storeBoardRecord(vb::Eeprom &eeprom, const BspDevinfo &record) {
    std::memcpy(eeprom.bytes + kBoardRecord, &record, 128);
}

void storeSupplyRecord(vb::Eeprom &eeprom, const BspSupplyRecord &record) {
    std::memcpy(eeprom.bytes + kSupplyRecord, &record, 80);
}
