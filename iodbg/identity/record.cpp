#include "iodbg/identity/record.h"

#include <algorithm>
#include <cstddef>

namespace iodbg {

namespace {

constexpr ShownField kFields[] = {
    {"magic", "Magic", FieldForm::Text, formats::kRecordMagic},
    {"product_name", "Product name", FieldForm::Text, formats::kRecordProductData2},
    {"serial_number", "Serial number", FieldForm::Text, formats::kRecordSerial},
    {"base_mac", "Base MAC", FieldForm::MacAddress, formats::kRecordMac},
    {"supply_count", "Supply count", FieldForm::Number, formats::kRecordSupplyCount},
    {"supply_types_hex", "Supply types", FieldForm::Hex, formats::kRecordSupplyTypes},
    {"product_data_1_hex", "Product data 1", FieldForm::Hex, formats::kRecordProductData1},
    {"product_data_2_hex", "Product data 2", FieldForm::Hex, formats::kRecordProductData2},
    {"product_data_3_hex", "Product data 3", FieldForm::Hex, formats::kRecordProductData3},
    {"reserved_1_hex", "Reserved 1", FieldForm::Hex, formats::kRecordReserved1},
    {"reserved_2_hex", "Reserved 2", FieldForm::Hex, formats::kRecordReserved2},
    {"crc_hex", "CRC", FieldForm::Hex, formats::kRecordCrc},
};

const uint8_t *start(const BspDevinfo &record) {
    return reinterpret_cast<const uint8_t *>(&record);
}

uint8_t *start(BspDevinfo &record) {
    return reinterpret_cast<uint8_t *>(&record);
}

/** Whether a field holds what a new memory does. Of a single byte nobody can tell. */
bool isErased(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    const ByteView bytes(start(record) + field.place.offset, field.sizeOn(carrier));
    return bytes.size() > 1 &&
           std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0xFF; });
}

} // namespace

const std::span<const ShownField> kRecordFields = kFields;

Cell cellOf(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    const ByteView content(start(record) + field.place.offset, field.sizeOn(carrier));
    switch (field.form) {
    case FieldForm::Text:
        return textCell(fieldText(content));
    case FieldForm::Hex:
        return textCell(hexBytes(content));
    case FieldForm::MacAddress:
        return textCell(macText(content));
    case FieldForm::Number:
        return numberCell(content[0]);
    }
    return {"", nullptr};
}

std::span<uint8_t> bytesOf(const ShownField &field, const Carrier &carrier, BspDevinfo &record) {
    return {start(record) + field.place.offset, field.sizeOn(carrier)};
}

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
        if (field.sizeOn(carrier) > 0)
            section.add(field.key, field.label, cellOf(field, carrier, record));
    }
}

std::vector<Change> changedFields(const Carrier &carrier, const BspDevinfo &before,
                                  const BspDevinfo &after) {
    const auto textOf = [&carrier](const ShownField &field, const BspDevinfo &record) {
        return isErased(field, carrier, record) ? "erased" : cellOf(field, carrier, record).text;
    };
    std::vector<Change> changes;
    for (const ShownField &field : kFields) {
        const size_t size = field.sizeOn(carrier);
        if (!std::equal(start(before) + field.place.offset,
                        start(before) + field.place.offset + size,
                        start(after) + field.place.offset))
            changes.push_back({field.key, textOf(field, before), textOf(field, after)});
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
