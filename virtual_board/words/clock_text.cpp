#include "virtual_board/words/clock_text.h"

#include "virtual_board/words/values.h"

#include <cstdio>

namespace vb {

std::string clockTimeText(const ClockTime &time) {
    char text[80];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return text;
}

ClockTime parseClockTime(const std::string &text) {
    ClockTime time = {};
    std::sscanf(text.c_str(), "%4u-%2u-%2u %2u:%2u:%2u", &time.year, &time.month, &time.day,
                &time.hour, &time.minute, &time.second);
    // Only what reads the same again is a time.
    if (!clockIsTime(time) || clockTimeText(time) != text)
        throw Refused("a time of the clock looks like '2024-02-29 23:59:59', from 1900 to 2059, "
                      "not '" +
                      text + "'");
    return time;
}

} // namespace vb
