#pragma once
// One look at all of the unit that is quick to read, for `iodbg watch`.

#include "iodbg/core/findings.h"
#include "iodbg/core/report.h"
#include "iodbg/poe/tour.h"
#include "iodbg/unit/watch_parts.h"

#include <string>

namespace iodbg {

/** What one round has found. */
struct Round {
    std::string time;
    Findings findings; // but what is good
    Report report;
    bool isAsked = true; // else nothing of the unit could be reached
};

/** Looks at some parts. PoE ports are asked a few at a time: the tour knows which are next. */
Round lookAround(const WatchedParts &parts, PoeTour &tour);

} // namespace iodbg
