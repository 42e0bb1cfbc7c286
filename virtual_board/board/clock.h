#pragma once
// The board's clock, and those that its programs read. Both keep the host's pace, or a multiple of
// it, or stand: a virtual clock but for the sleeps of the board's programs, whose own clocks go on
// meanwhile, a stepped one but for those who advance it, and its programs' clocks with it.

#include <algorithm>
#include <cstdint>

namespace vb {

enum class TimeMode : uint32_t { Real, Virtual, Stepped, Scaled };

/** What the host's clocks show at one moment. */
struct HostTime {
    uint64_t realNs;
    uint64_t monotonicNs;
};

// Rates are in thousandths of the host's pace.
constexpr uint32_t kHostRate = 1000;
constexpr uint32_t kLeastRate = 1;
constexpr uint32_t kMostRate = 1000000;

/** How a board's time passes. */
struct Pace {
    TimeMode mode = TimeMode::Real;
    uint32_t rate = kHostRate; // scaled: thousandths

    bool operator==(const Pace &other) const = default;
};

/** How far the clocks that programs read are from the host's. */
enum class Difference : uint32_t {
    None,
    Offset, // they keep its pace
    Pace,   // programs wait by them
};

struct Clock {
    // The anchor: since then the pace is what it is.
    alignas(8) uint64_t anchorNs; // the board's time; of a clock that stands it is now
    alignas(8) uint64_t anchorHostNs;
    alignas(8) uint64_t anchorMonotonicNs; // on the host's
    // The programs' clocks ahead of the host's, or of its anchor where they stand: by the paces
    // that there have been, and by the programs that have set the system clock.
    alignas(8) int64_t systemLeadNs;
    alignas(8) int64_t monotonicLeadNs;
    alignas(8) int64_t systemOffsetNs;
    Pace pace;
    Difference difference;
    uint32_t changes; // odd while one is made; who waits for the time is woken by it
};

/** The board's time as a length of the host's, and the other way round. */
constexpr int64_t scaled(int64_t hostNs, uint32_t rate) {
    const int64_t most = rate > kHostRate ? INT64_MAX / rate * kHostRate : INT64_MAX;
    const int64_t ns = std::clamp(hostNs, -most, most);
    return ns / kHostRate * rate + ns % kHostRate * rate / kHostRate;
}
constexpr uint64_t unscaled(uint64_t ns, uint32_t rate) {
    const uint64_t whole = ns / rate * kHostRate;
    return ns / rate > UINT64_MAX / kHostRate - 1
               ? UINT64_MAX
               : whole + (ns % rate * kHostRate + rate - 1) / rate;
}

constexpr uint32_t boardRate(const Clock &clock) {
    const bool stands =
        clock.pace.mode == TimeMode::Virtual || clock.pace.mode == TimeMode::Stepped;
    return stands ? 0 : clock.pace.rate;
}

/** At which rate the clocks that programs read go. */
constexpr uint32_t programRate(const Clock &clock) {
    return clock.pace.mode == TimeMode::Stepped ? 0 : clock.pace.rate;
}

constexpr uint64_t sinceAnchor(uint64_t base, uint64_t hostNs, uint64_t anchorNs, uint32_t rate) {
    const auto passed = static_cast<int64_t>(hostNs - anchorNs);
    const int64_t now = static_cast<int64_t>(base) + scaled(passed, rate);
    return now > 0 ? static_cast<uint64_t>(now) : 0; // the host's clock can be set back
}

/** Nanoseconds since the board was made; hostNs is the host's time. */
constexpr uint64_t clockNow(const Clock &clock, uint64_t hostNs) {
    return sinceAnchor(clock.anchorNs, hostNs, clock.anchorHostNs, boardRate(clock));
}

/** What programs read from their system clock, and from the others. */
constexpr int64_t systemClockNow(const Clock &clock, const HostTime &host) {
    return static_cast<int64_t>(sinceAnchor(clock.anchorHostNs, host.realNs, clock.anchorHostNs,
                                            programRate(clock))) +
           clock.systemLeadNs + clock.systemOffsetNs;
}
constexpr int64_t monotonicClockNow(const Clock &clock, const HostTime &host) {
    return static_cast<int64_t>(sinceAnchor(clock.anchorMonotonicNs, host.monotonicNs,
                                            clock.anchorMonotonicNs, programRate(clock))) +
           clock.monotonicLeadNs;
}

constexpr Difference differenceOf(const Clock &clock) {
    if (clock.pace.mode == TimeMode::Stepped || clock.pace.mode == TimeMode::Scaled)
        return Difference::Pace;
    const bool isOff =
        clock.systemLeadNs != 0 || clock.monotonicLeadNs != 0 || clock.systemOffsetNs != 0;
    return isOff ? Difference::Offset : Difference::None;
}

constexpr bool isPossible(const Pace &pace) {
    return pace.mode == TimeMode::Scaled ? pace.rate >= kLeastRate && pace.rate <= kMostRate
                                         : pace.mode <= TimeMode::Scaled && pace.rate == kHostRate;
}

/**
 * Whether the state is one that a clock can have. Set to any time that the kernel has, the system
 * clock is decades away from where 64 bits of nanoseconds end; a year of them is left.
 */
constexpr bool clockIsConsistent(const Clock &clock, uint64_t hostNs) {
    constexpr uint64_t kYearNs = 366ull * 86400 * 1000000000;
    constexpr auto kEnd = static_cast<uint64_t>(INT64_MAX) - kYearNs;
    constexpr auto kMostLead = static_cast<int64_t>(kEnd / 4);
    const auto isPossibleLead = [](int64_t lead) {
        return lead >= -kMostLead && lead <= kMostLead;
    };
    const bool isInRange =
        clock.systemOffsetNs <= 0 ||
        (hostNs < kEnd && static_cast<uint64_t>(clock.systemOffsetNs) <= kEnd - hostNs);
    return isInRange && isPossibleLead(clock.systemLeadNs) &&
           isPossibleLead(clock.monotonicLeadNs) && clock.anchorNs <= kEnd &&
           clock.anchorHostNs <= kEnd && clock.anchorMonotonicNs <= kEnd && isPossible(clock.pace);
}

/** Begins anew from where all clocks are. */
constexpr void anchorClock(Clock &clock, const HostTime &host) {
    const uint64_t now = clockNow(clock, host.realNs);
    const int64_t system = systemClockNow(clock, host) - clock.systemOffsetNs;
    const int64_t monotonic = monotonicClockNow(clock, host);
    clock.anchorNs = now;
    clock.anchorHostNs = host.realNs;
    clock.anchorMonotonicNs = host.monotonicNs;
    clock.systemLeadNs = system - static_cast<int64_t>(host.realNs);
    clock.monotonicLeadNs = monotonic - static_cast<int64_t>(host.monotonicNs);
}

/** Changes how time passes; all clocks go on from where they are. */
constexpr void setPace(Clock &clock, const Pace &pace, const HostTime &host) {
    anchorClock(clock, host);
    clock.pace = pace;
    clock.difference = differenceOf(clock);
}

/** Sets how far programs have set their system clock off. */
constexpr void setSystemOffset(Clock &clock, int64_t ns) {
    clock.systemOffsetNs = ns;
    clock.difference = differenceOf(clock);
}

/** Moves a clock that stands. */
constexpr void moveClock(Clock &clock, uint64_t ns) {
    clock.anchorNs += ns;
    if (clock.pace.mode != TimeMode::Stepped)
        return;
    clock.systemLeadNs += static_cast<int64_t>(ns);
    clock.monotonicLeadNs += static_cast<int64_t>(ns);
}

} // namespace vb
