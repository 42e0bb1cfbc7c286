#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/format.h"
#include "iodbg/record.h"
#include "iodbg/status_table.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

constexpr Subject kRecord = {Unit::ProductRecord};
constexpr Subject kSerial = {Unit::SerialNumber};
constexpr Subject kMac = {Unit::MacAddress};

Finding recordFinding() {
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status != BSP_OK)
        return silent(kRecord, status);
    const Verdict verdict = judge(record);
    if (!verdict.hasMagic)
        return {kRecord, Code::RecordMissing, "there is none"};
    if (!verdict.isCrcRight())
        return {kRecord, Code::RecordDamaged,
                "its CRC is " + hexNumber(verdict.storedCrc, 8) + " and should be " +
                    hexNumber(verdict.computedCrc, 8)};
    return good(kRecord, "whole");
}

Finding serialFinding() {
    std::array<char, sizeof(BspDevinfo)> serial{};
    uint32_t length = 0;
    if (const int32_t status = ioSerialNumGet(serial.data(), &length); status != BSP_OK)
        return unreadable(kSerial, status);
    if (serial[0] == '\0')
        return {kSerial, Code::SerialMissing, "there is none"};
    return good(kSerial,
                fieldText({reinterpret_cast<const uint8_t *>(serial.data()), serial.size()}));
}

Finding macFinding() {
    Mac mac{};
    if (const int32_t status = ioMacAddrGet(0, mac.data()); status != BSP_OK)
        return unreadable(kMac, status);
    const bool isGroup = (mac[0] & 1) != 0;
    const bool isZero = std::all_of(mac.begin(), mac.end(), [](uint8_t byte) { return byte == 0; });
    if (isGroup || isZero)
        return {kMac, Code::MacInvalid, macText(mac) + " is no address of a unit"};
    return good(kMac, macText(mac));
}

} // namespace

Findings identityFindings() {
    // Both are read from the record, and the library takes them from a whole one alone.
    const Finding record = recordFinding();
    if (record.severity() == Severity::Fault)
        return {record, notJudged(kSerial, kRecord), notJudged(kMac, kRecord)};
    return {record, serialFinding(), macFinding()};
}

} // namespace iodbg
