#include "iodbg/identity/capture.h"

#include "bsp.h"
#include "iodbg/identity/memory.h"
#include "iodbg/identity/record.h"
#include "language/formats/product_record.h"

#include <array>
#include <cstring>

namespace iodbg {

namespace {

template <size_t Size>
std::string textOf(const std::array<char, Size> &text) {
    return {text.data(), strnlen(text.data(), Size)};
}

void captureVersions(CaptureSheet &sheet) {
    std::array<char, BSP_HW_VERSION_SIZE> hardware{};
    int32_t status = ioHwVersionGet(hardware.data());
    sheet.putText("version.hardware", status, textOf(hardware));
    std::array<char, BSP_CPLD_VERSION_SIZE> cpld{};
    status = ioCpldVersionGet(cpld.data());
    sheet.putText("version.cpld", status, textOf(cpld));
    uint32_t serial = 0;
    status = ioDevSerialVerGet(&serial);
    sheet.putNumber("version.serial", status, serial);
}

/** The bytes of a field of the board's record. */
ByteView fieldOf(const Bytes &eeprom, const formats::RecordField &field) {
    return ByteView(eeprom).subspan(BSP_DEVINFO_OFFSET + field.offset, field.size);
}

const char *recordWord(const Bytes &eeprom) {
    const uint8_t *record = eeprom.data() + BSP_DEVINFO_OFFSET;
    if (!formats::hasRecordMagic(record))
        return "missing";
    const bool isWhole = formats::storedRecordCrc(record) == formats::computedRecordCrc(record);
    return isWhole ? "whole" : "damaged";
}

void captureRecord(CaptureSheet &sheet) {
    Bytes eeprom(BSP_EEPROM_SIZE);
    const int32_t status = readEeprom(Carrier{}, 0, eeprom);
    sheet.putBytes("eeprom.board", status, eeprom);
    sheet.put("identity.record", status, recordWord(eeprom));
    sheet.put("identity.product-name", status,
              fieldText(fieldOf(eeprom, formats::kRecordProductData2)));
    sheet.putNumber("identity.supply-count", status,
                    fieldOf(eeprom, formats::kRecordSupplyCount)[0]);
    sheet.putBytes("identity.supply-types", status, fieldOf(eeprom, formats::kRecordSupplyTypes));
}

void captureNumbers(CaptureSheet &sheet) {
    std::array<char, BSP_SERIAL_NUMBER_BUFFER + 1> serial{};
    uint32_t length = 0;
    int32_t status = ioSerialNumGet(serial.data(), &length);
    sheet.putText("identity.serial", status, textOf(serial));
    Mac mac{};
    status = ioMacAddrGet(BSP_MAC_BASE, mac.data());
    sheet.put("identity.mac", status, language::macText(mac));
}

} // namespace

void captureIdentity(CaptureSheet &sheet, const Model &) {
    captureVersions(sheet);
    captureRecord(sheet);
    captureNumbers(sheet);
}

} // namespace iodbg
