#pragma once
// The hardware watchdog: counts while a period is set, and starts over at each edge of its line.

#include "virtual_board/devices/cpld.h"

#include <cstdint>

namespace vb {

struct Watchdog {
    alignas(8) uint64_t fedNs; // the last edge, or the last write of the period
    uint32_t lineLevel;
    uint32_t padding;
};

/** The watchdog's period counts seconds of the board's clock. */
constexpr uint64_t kWatchdogUnitNs = 1000000000;

/** Period in a content of the watchdog register; 0 disarms. */
constexpr uint32_t watchdogPeriod(uint16_t reg) {
    return fieldOf(reg, kWatchdogPeriod);
}

/** When an armed watchdog resets the board; UINT64_MAX while it is not armed. */
constexpr uint64_t watchdogExpiry(const Watchdog &watchdog, uint16_t reg) {
    const uint32_t period = watchdogPeriod(reg);
    return period == 0 ? UINT64_MAX : watchdog.fedNs + period * kWatchdogUnitNs;
}

/** The line has a level; a change feeds the watchdog. */
constexpr void watchdogLine(Watchdog &watchdog, bool level, uint64_t nowNs) {
    const uint32_t newLevel = level ? 1 : 0;
    if (newLevel != watchdog.lineLevel)
        watchdog.fedNs = nowNs;
    watchdog.lineLevel = newLevel;
}

/** Whether the state is one that a watchdog can have. */
constexpr bool watchdogIsConsistent(const Watchdog &watchdog) {
    return watchdog.lineLevel <= 1;
}

} // namespace vb
