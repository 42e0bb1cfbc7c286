#include "virtual_board/words/clock_text.h"

#include "language/times.h"

namespace vb {

std::string clockTimeText(const ClockTime &time) {
    return language::calendarText(
        {time.year, time.month, time.day, time.hour, time.minute, time.second});
}

ClockTime parseClockTime(const std::string &text) {
    const language::CalendarTime time =
        language::parseCalendarTime(text, kClockFirstYear, kClockLastYear);
    return {time.year, time.month, time.day, time.hour, time.minute, time.second};
}

} // namespace vb
