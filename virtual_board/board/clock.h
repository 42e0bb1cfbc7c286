#pragma once
// The board's clock: real, or virtual, which stands still but for the sleeps of the board's
// programs.

#include <cstdint>

namespace vb {

enum class TimeMode : uint32_t { Real, Virtual };

struct Clock {
    alignas(8) uint64_t sleptNs;   // virtual: all sleeps since the board was made
    alignas(8) uint64_t startedNs; // real: when the board was made, in the host's time
    TimeMode mode;
    uint32_t padding;
};

/** Nanoseconds since the board was made; hostNs is the host's time. */
constexpr uint64_t clockNow(const Clock &clock, uint64_t hostNs) {
    return clock.mode == TimeMode::Virtual ? clock.sleptNs : hostNs - clock.startedNs;
}

} // namespace vb
