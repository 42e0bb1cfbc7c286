#pragma once
// Lengths and points of time, as the C library's structures have them.

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/timespec64.h"

#include <cstdint>
#include <sys/time.h>
#include <time.h>

namespace vb {

constexpr uint64_t kNsPerSecond = 1000000000;
constexpr uint64_t kNsPerUs = 1000;
/** How long something is waited for that is there or is not. */
constexpr timespec kNow = {0, 0};

/** A pointer to a type that macros are given. */
template <typename Time>
using PointerTo = Time *;

/** The fraction of a second, and how many ns its unit has. */
template <typename Time>
concept HasNanoseconds = requires(Time time) {
    time.tv_nsec;
};

template <typename Time>
constexpr uint64_t unitNs() {
    return HasNanoseconds<Time> ? 1 : 1000;
}
template <typename Time>
constexpr int64_t fractionOf(const Time &time) {
    if constexpr (HasNanoseconds<Time>)
        return time.tv_nsec;
    else
        return time.tv_usec;
}

/** Nanoseconds of a time that is neither negative nor has a fraction of a second or more. */
template <typename Time>
constexpr bool readDuration(const Time &time, uint64_t &ns) {
    const auto fraction = static_cast<uint64_t>(fractionOf(time));
    if (time.tv_sec < 0 || fractionOf(time) < 0 || fraction >= kNsPerSecond / unitNs<Time>())
        return false;
    constexpr uint64_t kMostSeconds = INT64_MAX / kNsPerSecond - 1; // as good as for ever
    const auto seconds = static_cast<uint64_t>(time.tv_sec);
    ns = (seconds < kMostSeconds ? seconds : kMostSeconds) * kNsPerSecond +
         fraction * unitNs<Time>();
    return true;
}

/** The same of one in the program's memory; false also where that cannot be read. */
template <typename Time>
bool readDurationAt(const Time *address, uint64_t &ns) {
    Time time = {};
    return copyFromUser(&time, address, sizeof(time)) && readDuration(time, ns);
}

template <typename Time>
constexpr Time durationOf(uint64_t ns) {
    Time time = {};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(ns / kNsPerSecond);
    if constexpr (HasNanoseconds<Time>)
        time.tv_nsec = static_cast<decltype(time.tv_nsec)>(ns % kNsPerSecond);
    else
        time.tv_usec = static_cast<decltype(time.tv_usec)>(ns % kNsPerSecond / unitNs<Time>());
    return time;
}

} // namespace vb
