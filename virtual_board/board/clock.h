#pragma once
// The board's clock: real, or virtual, which stands still but for the sleeps of the board's
// programs.

#include <cstdint>

namespace vb {

enum class TimeMode : uint32_t { Real, Virtual };

struct Clock {
    alignas(8) uint64_t sleptNs;       // virtual: all sleeps since the board was made
    alignas(8) uint64_t startedNs;     // real: when the board was made, in the host's time
    alignas(8) int64_t systemOffsetNs; // the programs' system clock ahead of the host's; 0: not set
    TimeMode mode;
    uint32_t padding;
};

/** Nanoseconds since the board was made; hostNs is the host's time. */
constexpr uint64_t clockNow(const Clock &clock, uint64_t hostNs) {
    if (clock.mode == TimeMode::Virtual)
        return clock.sleptNs;
    return hostNs > clock.startedNs ? hostNs - clock.startedNs
                                    : 0; // the host's clock can be set back
}

/**
 * Whether the state is one that a clock can have. Set to any time that the kernel has, the system
 * clock is decades away from where 64 bits of nanoseconds end; a year of them is left.
 */
constexpr bool clockIsConsistent(const Clock &clock, uint64_t hostNs) {
    constexpr uint64_t kYearNs = 366ull * 86400 * 1000000000;
    constexpr auto kEnd = static_cast<uint64_t>(INT64_MAX) - kYearNs;
    const bool isInRange =
        clock.systemOffsetNs <= 0 ||
        (hostNs < kEnd && static_cast<uint64_t>(clock.systemOffsetNs) <= kEnd - hostNs);
    return isInRange && (clock.mode == TimeMode::Real || clock.mode == TimeMode::Virtual);
}

/** Changes the kind of time; the board's clock goes on from where it is. */
constexpr void setTimeMode(Clock &clock, TimeMode mode, uint64_t hostNs) {
    const uint64_t now = clockNow(clock, hostNs);
    clock.mode = mode;
    clock.sleptNs = now;
    clock.startedNs = hostNs - now;
}

} // namespace vb
