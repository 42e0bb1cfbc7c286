#pragma once
// Dates and times as the clock chip holds them, in local time.

#include "bsp.h"

#include <cstdint>
#include <string>

namespace iodbg {

/** "2026-11-21 12:34:56" */
std::string calendarText(const BspCalendar &time);
/** Whether the numbers are a date and a time: a chip that was without power holds anything. */
bool isDate(const BspCalendar &time);
/** What the clock chip holds. */
struct ChipTime {
    BspCalendar time;
    bool isLost; // it was without power since it was set, so what it counts is no time

    bool isValid() const { return !isLost && isDate(time); }
};
int32_t readChipTime(ChipTime &chip);
/** How many seconds a time is behind another, whatever the time zone. */
int64_t secondsBetween(const BspCalendar &earlier, const BspCalendar &later);
/** The system clock. */
BspCalendar systemTime();
/** The same in UTC: "2026-11-21T12:34:56Z" */
std::string utcText();

} // namespace iodbg
