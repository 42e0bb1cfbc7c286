#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/format.h"
#include "iodbg/record.h"
#include "iodbg/status_table.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

Finding recordFinding() {
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status != BSP_OK)
        return unreadable("product record", status);
    const Verdict verdict = judge(record);
    if (!verdict.hasMagic)
        return {"product record", Severity::Fault, "there is none",
                "store one with 'iodbg identity set record --file FILE'"};
    if (!verdict.isCrcRight())
        return {"product record", Severity::Fault,
                "its CRC is " + hexNumber(verdict.storedCrc, 8) + " and should be " +
                    hexNumber(verdict.computedCrc, 8),
                "compare it with the label, then store it again with --renew-crc"};
    return good("product record", "whole");
}

Finding serialFinding() {
    std::array<char, sizeof(BspDevinfo)> serial{};
    uint32_t length = 0;
    if (const int32_t status = ioSerialNumGet(serial.data(), &length); status != BSP_OK)
        return unreadable("serial number", status);
    if (serial[0] == '\0')
        return {"serial number", Severity::Warning, "there is none",
                "store it with 'iodbg identity set serial TEXT'"};
    return good("serial number",
                fieldText({reinterpret_cast<const uint8_t *>(serial.data()), serial.size()}));
}

Finding macFinding() {
    Mac mac{};
    if (const int32_t status = ioMacAddrGet(0, mac.data()); status != BSP_OK)
        return unreadable("MAC address", status);
    const bool isGroup = (mac[0] & 1) != 0;
    const bool isZero = std::all_of(mac.begin(), mac.end(), [](uint8_t byte) { return byte == 0; });
    if (isGroup || isZero)
        return {"MAC address", Severity::Fault, macText(mac) + " is no address of a unit",
                "store it with 'iodbg identity set mac'"};
    return good("MAC address", macText(mac));
}

} // namespace

Findings identityFindings() {
    return {recordFinding(), serialFinding(), macFinding()};
}

} // namespace iodbg
