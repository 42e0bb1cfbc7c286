#include "iodbg/identity/record.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace iodbg {

namespace {

constexpr uint32_t kCheckedSize = offsetof(BspDevinfo, crc);

enum class Form { Text, Hex, Mac, Number };

/** One field of the record. */
struct RecordField {
    const char *key;
    const char *label;
    Form form;
    size_t offset;
    size_t size;
    size_t sizeOfSupply; // how much of it a supply's record has
};

#define FIELD(name) offsetof(BspDevinfo, name), sizeof(BspDevinfo::name)
constexpr RecordField kFields[] = {
    {"magic", "Magic", Form::Text, FIELD(magic), 0},
    {"product_name", "Product name", Form::Text, FIELD(productData2), 32},
    {"serial_number", "Serial number", Form::Text, FIELD(serial), 24},
    {"base_mac", "Base MAC", Form::Mac, FIELD(mac), 0},
    {"supply_count", "Supply count", Form::Number, FIELD(supplyCount), 0},
    {"supply_types_hex", "Supply types", Form::Hex, FIELD(supplyType), 0},
    {"product_data_1_hex", "Product data 1", Form::Hex, FIELD(productData1), 16},
    {"product_data_2_hex", "Product data 2", Form::Hex, FIELD(productData2), 32},
    {"product_data_3_hex", "Product data 3", Form::Hex, FIELD(productData3), 4},
    {"reserved_1_hex", "Reserved 1", Form::Hex, FIELD(reserved1), 0},
    {"reserved_2_hex", "Reserved 2", Form::Hex, FIELD(reserved2), 0},
    {"crc_hex", "CRC", Form::Hex, FIELD(crc), 0},
};
#undef FIELD

const uint8_t *start(const BspDevinfo &record) {
    return reinterpret_cast<const uint8_t *>(&record);
}

size_t sizeOf(const RecordField &field, const Carrier &carrier) {
    return carrier.isBoard() ? field.size : field.sizeOfSupply;
}

Cell cellOf(const RecordField &field, const Carrier &carrier, const BspDevinfo &record) {
    const ByteView content(start(record) + field.offset, sizeOf(field, carrier));
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

uint32_t loadCrc(const BspDevinfo &record) {
    uint32_t crc = 0;
    for (const uint8_t byte : record.crc) // most significant byte first
        crc = crc << 8 | byte;
    return crc;
}

} // namespace

int32_t readRecord(const Carrier &carrier, BspDevinfo &record) {
    record = BspDevinfo{};
    if (!carrier.isBoard())
        return ioDevinfoGet(carrier.devinfoIndex(), &record);
    return bspLocalEepromRead(BSP_DEVINFO_OFFSET, reinterpret_cast<uint8_t *>(&record),
                              sizeof(record));
}

int32_t Verdict::status() const {
    if (!hasMagic)
        return BSP_E_NO_RECORD;
    return isCrcRight() ? BSP_OK : BSP_E_INVALID;
}

Verdict judge(const BspDevinfo &record) {
    return {std::memcmp(record.magic, BSP_DEVINFO_MAGIC, sizeof(record.magic)) == 0,
            loadCrc(record), bsp_crc32_cal(0, start(record), kCheckedSize)};
}

void renewCrc(BspDevinfo &record) {
    uint32_t crc = judge(record).computedCrc;
    for (size_t i = sizeof(record.crc); i > 0; --i, crc >>= 8)
        record.crc[i - 1] = static_cast<uint8_t>(crc);
}

void addVerdict(Section &section, const Verdict &verdict) {
    constexpr int kCrcDigits = 8;
    section.add("magic_ok", "Magic check", flagCell(verdict.hasMagic, "ok", "missing"));
    section.add("crc_ok", "CRC check", flagCell(verdict.isCrcRight(), "ok", "wrong"));
    section.add("crc_stored", "CRC stored", hexCell(verdict.storedCrc, kCrcDigits));
    section.add("crc_computed", "CRC computed", hexCell(verdict.computedCrc, kCrcDigits));
}

void addFields(Section &section, const Carrier &carrier, const BspDevinfo &record) {
    for (const RecordField &field : kFields) {
        if (sizeOf(field, carrier) > 0)
            section.add(field.key, field.label, cellOf(field, carrier, record));
    }
}

std::vector<Change> changedFields(const Carrier &carrier, const BspDevinfo &before,
                                  const BspDevinfo &after) {
    std::vector<Change> changes;
    for (const RecordField &field : kFields) {
        const size_t size = sizeOf(field, carrier);
        if (!std::equal(start(before) + field.offset, start(before) + field.offset + size,
                        start(after) + field.offset))
            changes.push_back({field.key, cellOf(field, carrier, before).text,
                               cellOf(field, carrier, after).text});
    }
    return changes;
}

int firstByteWithoutPlace(const BspDevinfo &supplyView) {
    Bytes bytes = bytesOf(supplyView);
    for (const RecordField &field : kFields)
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(field.offset), field.sizeOfSupply,
                    uint8_t{0});
    const auto found = std::find_if(bytes.begin(), bytes.end(), [](uint8_t b) { return b != 0; });
    return found == bytes.end() ? -1 : static_cast<int>(found - bytes.begin());
}

Bytes bytesOf(const BspDevinfo &record) {
    return {start(record), start(record) + sizeof(record)};
}

} // namespace iodbg
