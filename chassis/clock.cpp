// The battery-backed clock chip, and the system clock that is set from it when the library starts.
// Built with 64-bit time everywhere, because 32 bits of seconds end in January 2038, unless the
// build is for a C library that has no other: mktime() then knows no later time, and
// clock_settime() refuses what it answers.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "support/board_map.h"

#include <algorithm>
#include <ctime>
#include <iterator>

#ifndef BSP_TIME_32
static_assert(sizeof(time_t) == 8,
              "the clock must outlive 2038; this C library's does not: configure "
              "with -DBSP_TIME_64=OFF to have one that ends there");
#endif

namespace {

using bsp::kClockChip;

/** A register of the chip: two decimal digits. */
struct ClockRegister {
    uint32_t number;
    uint8_t tensMask; // the other bits of the tens are flags
};

// In the order of transfer. Register 6, the weekday, is nobody's business here.
enum Field { kSecond, kMinute, kHour, kDay, kMonth, kYear, kFields };
constexpr ClockRegister kRegisters[kFields] = {
    {2, 0x7F}, {3, 0x7F}, {4, 0x3F}, {5, 0x3F}, {7, 0x1F}, {8, 0xFF},
};

// The tens are not limited to 9: years count from 1900, and 124 is stored as C4.
constexpr uint8_t encode(uint32_t value) {
    return static_cast<uint8_t>(value % 10 + value / 10 * 16);
}
constexpr uint8_t decode(uint8_t digits, uint8_t tensMask) {
    return static_cast<uint8_t>((digits & 0x0F) + 10 * ((digits & tensMask) >> 4));
}

/** Stores field by field with store(field, value), up to the first that cannot be read. */
template <typename Store>
int32_t readChip(Store store) {
    for (unsigned field = 0; field < kFields; ++field) {
        const ClockRegister &reg = kRegisters[field];
        uint8_t digits = 0;
        if (const int32_t status = bspI2cRead(kClockChip.bus, kClockChip.channel, kClockChip.device,
                                              reg.number, 1, &digits, 1);
            status != BSP_OK)
            return status;
        store(field, decode(digits, reg.tensMask));
    }
    return BSP_OK;
}

/** Whether the board has the chip. */
int32_t findClock(bool *hasClock) {
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    *hasClock = bsp::boardModel(devId).hasClock;
    return BSP_OK;
}

} // namespace

int32_t bsp_rtc_chip_get(uint16_t *year, uint8_t *month, uint8_t *day, uint8_t *hour,
                         uint8_t *minute, uint8_t *second) {
    uint8_t *const outputs[] = {second, minute, hour, day, month};
    if (year == nullptr ||
        std::find(std::begin(outputs), std::end(outputs), nullptr) != std::end(outputs))
        return BSP_E_NULL;
    return readChip([&](unsigned field, uint8_t value) {
        if (field == kYear)
            *year = value;
        else
            *outputs[field] = value;
    });
}

int32_t bsp_rtc_chip_set(uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
                         uint32_t minute, uint32_t second) {
    const uint32_t values[kFields] = {second, minute, hour, day, month, year & 0xFF};
    for (unsigned field = 0; field < kFields; ++field) {
        const uint8_t digits = encode(values[field]);
        if (const int32_t status =
                bspI2cWrite(kClockChip.bus, kClockChip.channel, kClockChip.device,
                            kRegisters[field].number, 1, &digits, 1);
            status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

int32_t bspRealtimeGet(BspCalendar *record) {
    bool hasClock = false;
    if (const int32_t status = findClock(&hasClock); status != BSP_OK || !hasClock)
        return status;
    if (record == nullptr)
        return BSP_E_NULL;
    uint32_t *const fields[kFields] = {&record->second, &record->minute, &record->hour,
                                       &record->day,    &record->month,  &record->year};
    return readChip([&](unsigned field, uint8_t value) { *fields[field] = value; });
}

int32_t bspRealtimeSet(const BspCalendar *record) {
    bool hasClock = false;
    if (const int32_t status = findClock(&hasClock); status != BSP_OK || !hasClock)
        return status;
    return bsp_rtc_chip_set(record->year & 0xFFFF, record->month & 0xFF, record->day & 0xFF,
                            record->hour & 0xFF, record->minute & 0xFF, record->second & 0xFF);
}

int32_t bspSysClockSync(void) {
    BspCalendar record{};
    if (const int32_t status = bspRealtimeGet(&record); status != BSP_OK)
        return status;
    tm time{};
    time.tm_sec = static_cast<int>(record.second);
    time.tm_min = static_cast<int>(record.minute);
    time.tm_hour = static_cast<int>(record.hour);
    time.tm_mday = static_cast<int>(record.day);
    time.tm_mon = static_cast<int>(record.month);
    time.tm_year = static_cast<int>(record.year);
    time.tm_isdst = -1; // the time zone knows
    timespec now{};
    now.tv_sec = std::mktime(&time);
    clock_settime(CLOCK_REALTIME, &now); // without the privilege the system clock stays as it is
    return BSP_OK;
}

int32_t bspInit(void) {
    bspSysClockSync();
    return BSP_OK;
}
