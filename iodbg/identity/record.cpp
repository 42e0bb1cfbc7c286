#include "iodbg/identity/record.h"

#include "language/formats/product_record.h"

#include <algorithm>
#include <cstddef>

namespace iodbg {

namespace {

enum class Form { Text, Hex, Mac, Number };

/** One field of the record. */
struct ShownField {
    const char *key;
    const char *label;
    Form form;
    formats::RecordField place;
};

constexpr ShownField kFields[] = {
    {"magic", "Magic", Form::Text, formats::kRecordMagic},
    {"product_name", "Product name", Form::Text, formats::kRecordProductData2},
    {"serial_number", "Serial number", Form::Text, formats::kRecordSerial},
    {"base_mac", "Base MAC", Form::Mac, formats::kRecordMac},
    {"supply_count", "Supply count", Form::Number, formats::kRecordSupplyCount},
    {"supply_types_hex", "Supply types", Form::Hex, formats::kRecordSupplyTypes},
    {"product_data_1_hex", "Product data 1", Form::Hex, formats::kRecordProductData1},
    {"product_data_2_hex", "Product data 2", Form::Hex, formats::kRecordProductData2},
    {"product_data_3_hex", "Product data 3", Form::Hex, formats::kRecordProductData3},
    {"reserved_1_hex", "Reserved 1", Form::Hex, formats::kRecordReserved1},
    {"reserved_2_hex", "Reserved 2", Form::Hex, formats::kRecordReserved2},
    {"crc_hex", "CRC", Form::Hex, formats::kRecordCrc},
};

const uint8_t *start(const BspDevinfo &record) {
    return reinterpret_cast<const uint8_t *>(&record);
}

size_t sizeOf(const ShownField &field, const Carrier &carrier) {
    return carrier.isBoard() ? field.place.size : field.place.supplySize;
}

Cell cellOf(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    const ByteView content(start(record) + field.place.offset, sizeOf(field, carrier));
    switch (field.form) {
    case Form::Text:
        return textCell(fieldText(content));
    case Form::Hex:
        return textCell(hexBytes(content));
    case Form::Mac:
        return textCell(macText(content));
    case Form::Number:
        return numberCell(content[0]);
    }
    return {"", nullptr};
}

uint8_t *start(BspDevinfo &record) {
    return reinterpret_cast<uint8_t *>(&record);
}

} // namespace

int32_t readRecord(const Carrier &carrier, BspDevinfo &record) {
    record = BspDevinfo{};
    if (!carrier.isBoard())
        return ioDevinfoGet(carrier.devinfoIndex(), &record);
    return bspLocalEepromRead(BSP_DEVINFO_OFFSET, start(record), sizeof(record));
}

int32_t Verdict::status() const {
    if (!hasMagic)
        return BSP_E_NO_RECORD;
    return isCrcRight() ? BSP_OK : BSP_E_INVALID;
}

Verdict judge(const BspDevinfo &record) {
    const uint8_t *bytes = start(record);
    return {formats::hasRecordMagic(bytes), formats::storedRecordCrc(bytes),
            formats::computedRecordCrc(bytes)};
}

void renewCrc(BspDevinfo &record) {
    formats::renewRecordCrc(start(record));
}

void addVerdict(Section &section, const Verdict &verdict) {
    constexpr int kCrcDigits = 8;
    section.add("magic_ok", "Magic check", flagCell(verdict.hasMagic, "ok", "missing"));
    section.add("crc_ok", "CRC check", flagCell(verdict.isCrcRight(), "ok", "wrong"));
    section.add("crc_stored", "CRC stored", hexCell(verdict.storedCrc, kCrcDigits));
    section.add("crc_computed", "CRC computed", hexCell(verdict.computedCrc, kCrcDigits));
}

void addFields(Section &section, const Carrier &carrier, const BspDevinfo &record) {
    for (const ShownField &field : kFields) {
        if (sizeOf(field, carrier) > 0)
            section.add(field.key, field.label, cellOf(field, carrier, record));
    }
}

std::vector<Change> changedFields(const Carrier &carrier, const BspDevinfo &before,
                                  const BspDevinfo &after) {
    std::vector<Change> changes;
    for (const ShownField &field : kFields) {
        const size_t size = sizeOf(field, carrier);
        if (!std::equal(start(before) + field.place.offset,
                        start(before) + field.place.offset + size,
                        start(after) + field.place.offset))
            changes.push_back({field.key, cellOf(field, carrier, before).text,
                               cellOf(field, carrier, after).text});
    }
    return changes;
}

int firstByteWithoutPlace(const BspDevinfo &supplyView) {
    Bytes bytes = bytesOf(supplyView);
    for (const ShownField &field : kFields)
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(field.place.offset),
                    field.place.supplySize, uint8_t{0});
    const auto found = std::find_if(bytes.begin(), bytes.end(), [](uint8_t b) { return b != 0; });
    return found == bytes.end() ? -1 : static_cast<int>(found - bytes.begin());
}

Bytes bytesOf(const BspDevinfo &record) {
    return {start(record), start(record) + sizeof(record)};
}

} // namespace iodbg
