#include "iodbg/chassis/calendar.h"

#include "language/times.h"
#include "support/board_map.h"

#include <ctime>

namespace iodbg {

namespace {

std::tm tmOf(const BspCalendar &time) {
    std::tm tm = {};
    tm.tm_sec = static_cast<int>(time.second);
    tm.tm_min = static_cast<int>(time.minute);
    tm.tm_hour = static_cast<int>(time.hour);
    tm.tm_mday = static_cast<int>(time.day);
    tm.tm_mon = static_cast<int>(time.month);
    tm.tm_year = static_cast<int>(time.year);
    return tm;
}

BspCalendar calendarOf(const std::tm &tm) {
    return {static_cast<uint32_t>(tm.tm_sec),  static_cast<uint32_t>(tm.tm_min),
            static_cast<uint32_t>(tm.tm_hour), static_cast<uint32_t>(tm.tm_mday),
            static_cast<uint32_t>(tm.tm_mon),  static_cast<uint32_t>(tm.tm_year)};
}

int64_t secondsOf(const BspCalendar &time) {
    std::tm tm = tmOf(time);
    return timegm(&tm);
}

} // namespace

std::string calendarText(const BspCalendar &time) {
    return language::calendarText({time.year + BSP_CALENDAR_FIRST_YEAR, time.month + 1, time.day,
                                   time.hour, time.minute, time.second});
}

bool isDate(const BspCalendar &time) {
    std::tm tm = tmOf(time);
    timegm(&tm); // moves what is out of range
    const BspCalendar moved = calendarOf(tm);
    return moved.second == time.second && moved.minute == time.minute && moved.hour == time.hour &&
           moved.day == time.day && moved.month == time.month;
}

int32_t readChipTime(ChipTime &chip) {
    // The library leaves the bit for lost time out of the seconds.
    using bsp::kClockChip;
    constexpr uint32_t kSecondsRegister = 2;
    constexpr uint8_t kLostBit = 0x80;
    chip = {};
    if (const int32_t status = ioRealtimeGet(&chip.time); status != BSP_OK)
        return status;
    uint8_t seconds = 0;
    const int32_t status = bspI2cRead(kClockChip.bus, kClockChip.channel, kClockChip.device,
                                      kSecondsRegister, 1, &seconds, 1);
    chip.isLost = (seconds & kLostBit) != 0;
    return status;
}

int64_t secondsBetween(const BspCalendar &earlier, const BspCalendar &later) {
    return secondsOf(later) - secondsOf(earlier);
}

BspCalendar systemTime() {
    const std::time_t now = std::time(nullptr);
    std::tm tm = {};
    localtime_r(&now, &tm);
    return calendarOf(tm);
}

std::string utcText() {
    const std::time_t now = std::time(nullptr);
    std::tm tm = {};
    gmtime_r(&now, &tm);
    std::string text = calendarText(calendarOf(tm));
    text[text.find(' ')] = 'T';
    return text + "Z";
}

} // namespace iodbg
