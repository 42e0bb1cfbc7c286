#pragma once
// Product information records for tests.

#include "bsp.h"
#include "virtual_board/devices/eeprom.h"

#include <cstdint>
#include <cstring>
#include <vector>

using Bytes = std::vector<uint8_t>;

/** A record whose byte i holds first + i, so that each byte tells where it comes from. */
template <typename Record>
Record numbered(uint8_t first) {
    Record record;
    auto *bytes = reinterpret_cast<uint8_t *>(&record);
    for (size_t i = 0; i < sizeof(record); ++i)
        bytes[i] = static_cast<uint8_t>(first + i);
    return record;
}

template <typename Record>
Bytes bytesOf(const Record &record) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&record);
    return {bytes, bytes + sizeof(record)};
}

/** A numbered board record with the magic, and with its CRC. */
BspDevinfo numberedBoardRecord();

/** Gives a board record the CRC of its content. */
void seal(BspDevinfo &record);

Bytes bytesAt(const vb::Eeprom &eeprom, uint32_t offset, uint32_t count);

/** What a board's EEPROM holds as its record, and what a supply's does. */
Bytes boardRecordIn(const vb::Eeprom &eeprom);
Bytes supplyRecordIn(const vb::Eeprom &eeprom);

void storeBoardRecord(vb::Eeprom &eeprom, const BspDevinfo &record);
void storeSupplyRecord(vb::Eeprom &eeprom, const BspSupplyRecord &record);
