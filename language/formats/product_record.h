#pragma once
// The product information record in the EEPROM of the board, and the shorter one of a power supply,
// which has neither magic nor checksum and is shown in the places of the board's.

#include "language/formats/byte_order.h"
#include "language/formats/crc32.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace formats {

constexpr size_t kBoardRecordSize = 128;
constexpr size_t kSupplyRecordSize = 80;
constexpr char kBoardRecordMagic[] = "DEVINFO"; // its zero belongs to it

/** Where a field lies in the board's record, and as much of it as a supply has in a supply's. */
struct RecordField {
    uint8_t offset, size;
    uint8_t supplyOffset = 0, supplySize = 0;
};
constexpr RecordField kRecordMagic = {0, 8};
constexpr RecordField kRecordReserved1 = {8, 2};
constexpr RecordField kRecordMac = {10, 6}; // first octet first
constexpr RecordField kRecordProductData1 = {16, 16, 64, 16};
constexpr RecordField kRecordProductData2 = {32, 32, 0, 32};
constexpr RecordField kRecordSerial = {64, 32, 40, 24}; // ASCII, zero-padded
constexpr RecordField kRecordSupplyCount = {96, 1};
constexpr RecordField kRecordSupplyTypes = {97, 6};
constexpr RecordField kRecordProductData3 = {103, 4, 32, 4};
constexpr RecordField kRecordReserved2 = {107, 17};
constexpr RecordField kRecordCrc = {124, 4}; // of all before it, most significant byte first

/** What a supply's record has, too. */
constexpr RecordField kSupplyFields[] = {kRecordProductData1, kRecordProductData2,
                                         kRecordProductData3, kRecordSerial};

inline bool hasRecordMagic(const uint8_t *record) {
    return std::memcmp(record, kBoardRecordMagic, sizeof(kBoardRecordMagic)) == 0;
}

constexpr uint32_t storedRecordCrc(const uint8_t *record) {
    return loadBe32(record + kRecordCrc.offset);
}

inline uint32_t computedRecordCrc(const uint8_t *record) {
    return crc32(0, record, kRecordCrc.offset);
}

inline void renewRecordCrc(uint8_t *record) {
    storeBe32(record + kRecordCrc.offset, computedRecordCrc(record));
}

/** Puts a supply's record into the places of a board's; all other bytes stay. */
inline void showSupplyRecord(const uint8_t *supply, uint8_t *board) {
    for (const RecordField &field : kSupplyFields)
        std::memcpy(board + field.offset, supply + field.supplyOffset, field.supplySize);
}

/** Takes a supply's record from the places of a board's. What these have no place for stays. */
inline void takeSupplyRecord(const uint8_t *board, uint8_t *supply) {
    for (const RecordField &field : kSupplyFields)
        std::memcpy(supply + field.supplyOffset, board + field.offset, field.supplySize);
}

} // namespace formats
