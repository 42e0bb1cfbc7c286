#pragma once
// Times of the calendar clock in words.

#include "virtual_board/devices/clock_chip.h"

#include <string>

namespace vb {

/** "2024-02-29 23:59:59". */
std::string clockTimeText(const ClockTime &time);

/** The time of such a text, or of one with a T in the middle; others, and times that there are not,
    throw Refused. */
ClockTime parseClockTime(const std::string &text);

} // namespace vb
