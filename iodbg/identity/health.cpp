#include "iodbg/identity/health.h"

#include "bsp.h"
#include "iodbg/core/format.h"
#include "iodbg/core/status_table.h"
#include "iodbg/identity/record.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

constexpr Subject kRecordSubject = {Unit::ProductRecord};
constexpr Subject kSerialSubject = {Unit::SerialNumber};
constexpr Subject kMacSubject = {Unit::MacAddress};

Finding recordFinding() {
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status != BSP_OK)
        return silent(kRecordSubject, status);
    const Verdict verdict = judge(record);
    if (!verdict.hasMagic)
        return {kRecordSubject, Code::RecordMissing, "there is none"};
    if (!verdict.isCrcRight())
        return {kRecordSubject, Code::RecordDamaged,
                "its CRC is " + hexNumber(verdict.storedCrc, 8) + " and should be " +
                    hexNumber(verdict.computedCrc, 8)};
    return good(kRecordSubject, "whole");
}

Finding serialFinding() {
    std::array<char, sizeof(BspDevinfo)> serial{};
    uint32_t length = 0;
    if (const int32_t status = ioSerialNumGet(serial.data(), &length); status != BSP_OK)
        return unreadable(kSerialSubject, status);
    if (serial[0] == '\0')
        return {kSerialSubject, Code::SerialMissing, "there is none"};
    return good(kSerialSubject,
                fieldText({reinterpret_cast<const uint8_t *>(serial.data()), serial.size()}));
}

Finding macFinding() {
    Mac mac{};
    if (const int32_t status = ioMacAddrGet(0, mac.data()); status != BSP_OK)
        return unreadable(kMacSubject, status);
    const bool isGroup = (mac[0] & 1) != 0;
    const bool isZero = std::all_of(mac.begin(), mac.end(), [](uint8_t byte) { return byte == 0; });
    if (isGroup || isZero)
        return {kMacSubject, Code::MacInvalid, macText(mac) + " is no address of a unit"};
    return good(kMacSubject, macText(mac));
}

} // namespace

Findings identityFindings() {
    // Both are read from the record, and the library takes them from a whole one alone.
    const Finding record = recordFinding();
    if (record.severity() == Severity::Fault)
        return {record, notJudged(kSerialSubject, kRecordSubject),
                notJudged(kMacSubject, kRecordSubject)};
    return {record, serialFinding(), macFinding()};
}

} // namespace iodbg
