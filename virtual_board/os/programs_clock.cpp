#include "virtual_board/os/programs_clock.h"

#include "virtual_board/os/seam.h"

#include <algorithm>
#include <atomic>

namespace vb {

ProgramsClock::ProgramsClock() : ProgramsClock(readClock(*attachedFolder())) {}

ProgramsClock ProgramsClock::underLock() {
    return ProgramsClock(attachedFolder()->board()->clock);
}

Difference clockDifference() {
    const BoardFolder *folder = attachedFolder();
    return folder == nullptr
               ? Difference::None
               : std::atomic_ref(folder->board()->clock.difference).load(std::memory_order_relaxed);
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
