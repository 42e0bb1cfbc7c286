#include "virtual_board/os/programs_clock.h"

#include "virtual_board/os/seam.h"

#include <algorithm>
#include <atomic>

namespace vb {

namespace {

// When the board is gone its clock goes on at the host's pace, in each process by itself.
Clock ownClock;
std::atomic<bool> isGone;

} // namespace

bool goesByHost() {
    return isGone.load(std::memory_order_acquire);
}

ProgramsClock::ProgramsClock()
    : ProgramsClock(goesByHost() ? ownClock : readClock(*attachedFolder())) {}

ProgramsClock ProgramsClock::underLock() {
    return ProgramsClock(goesByHost() ? ownClock : attachedFolder()->board()->clock);
}

void goByHost() {
    if (goesByHost())
        return;
    ownClock = attachedFolder()->board()->clock;
    setPace(ownClock, {}, hostTime());
    ownClock.changes += 2; // for the timers
    isGone.store(true, std::memory_order_release);
}

void goByBoard() {
    isGone.store(false, std::memory_order_release);
}

Difference clockDifference() {
    const BoardFolder *folder = attachedFolder();
    if (folder == nullptr)
        return Difference::None;
    Clock &clock = goesByHost() ? ownClock : folder->board()->clock;
    return std::atomic_ref(clock.difference).load(std::memory_order_relaxed);
}

bool isSystemClock(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE ||
           clock == CLOCK_REALTIME_ALARM;
}

bool isOffHost(clockid_t clock) {
    const bool isMonotonic = clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE ||
                             clock == CLOCK_MONOTONIC_RAW || clock == CLOCK_BOOTTIME ||
                             clock == CLOCK_BOOTTIME_ALARM;
    return (isMonotonic || isSystemClock(clock)) && clockDifference() != Difference::None;
}

Deadline Deadline::in(uint64_t ns) {
    const int64_t now = ProgramsClock().monotonicNs();
    const auto most = static_cast<uint64_t>(INT64_MAX - std::max<int64_t>(now, 0));
    return {Kind::Monotonic, now + static_cast<int64_t>(std::min(ns, most))};
}

Deadline Deadline::at(clockid_t clock, int64_t ns) {
    return {isSystemClock(clock) ? Kind::System : Kind::Monotonic, ns};
}

uint64_t Deadline::left(const ProgramsClock &now) const {
    if (isNever())
        return UINT64_MAX;
    const int64_t reached = kind_ == Kind::System ? now.systemNs() : now.monotonicNs();
    return ns_ > reached ? static_cast<uint64_t>(ns_) - static_cast<uint64_t>(reached) : 0;
}

} // namespace vb
