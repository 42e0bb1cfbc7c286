#pragma once
// Device information records: reading, judging and showing them.

#include "bsp.h"
#include "iodbg/core/report.h"
#include "iodbg/core/update.h"
#include "iodbg/identity/memory.h"
#include "language/formats/product_record.h"

#include <span>
#include <vector>

namespace iodbg {

/**
 * Reads the record of the board or a supply. The board's comes as it is stored, damaged ones
 * included; a supply's is the library's view of it, zeros where the supply has no such bytes.
 */
int32_t readRecord(const Carrier &carrier, BspDevinfo &record);

/** Whether a board's record is one. */
struct Verdict {
    bool hasMagic;
    uint32_t storedCrc;
    uint32_t computedCrc;

    bool isCrcRight() const { return storedCrc == computedCrc; }
    /** What the library answers to a reader of the record. */
    int32_t status() const;
};

Verdict judge(const BspDevinfo &record);
/** Makes the record's CRC right. */
void renewCrc(BspDevinfo &record);

enum class FieldForm { Text, Hex, MacAddress, Number };

/** One field of the record. */
struct ShownField {
    const char *key;
    const char *label;
    FieldForm form;
    formats::RecordField place;

    size_t sizeOn(const Carrier &carrier) const {
        return carrier.isBoard() ? place.size : place.supplySize;
    }
};
extern const std::span<const ShownField> kRecordFields;

/** What a field holds, in the form of the field. */
Cell cellOf(const ShownField &field, const Carrier &carrier, const BspDevinfo &record);
/** Its bytes. */
std::span<uint8_t> bytesOf(const ShownField &field, const Carrier &carrier, BspDevinfo &record);

/** Magic and CRC of the board's record, in a section. */
void addVerdict(Section &section, const Verdict &verdict);
/** All fields that the record of the board or a supply has. */
void addFields(Section &section, const Carrier &carrier, const BspDevinfo &record);

/** Which fields differ between two records. */
std::vector<Change> changedFields(const Carrier &carrier, const BspDevinfo &before,
                                  const BspDevinfo &after);

/** Offset of the first byte that a supply's record has no place for but is not zero, or -1. */
int firstByteWithoutPlace(const BspDevinfo &supplyView);

Bytes bytesOf(const BspDevinfo &record);

} // namespace iodbg
