#include "virtual_board/board/clock_change.h"

#include "virtual_board/board/lock.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sched.h>

namespace vb {

namespace {

/** Copies the clock; false when it was changed meanwhile. */
bool copyClock(Clock &source, Clock &copy) {
    const std::atomic_ref<uint32_t> changes(source.changes);
    const uint32_t before = changes.load(std::memory_order_acquire);
    copy = source;
    const uint32_t after = changes.fetch_or(0, std::memory_order_acq_rel); // not before the copy
    return before % 2 == 0 && after == before;
}

} // namespace

HostTime hostTime() {
    return {hostNow(), kernel::clockNow(CLOCK_MONOTONIC)};
}

Clock readClock(const BoardFolder &folder) {
    constexpr int kUsualTries = 100;
    Clock clock;
    for (int tries = 0; tries < kUsualTries; ++tries) {
        if (copyClock(folder.board()->clock, clock))
            return clock;
        sched_yield();
    }
    const BoardLock lock(folder, BoardLock::Use::Looks); // its maker has been killed, or is stopped
    return folder.board()->clock;
}

ClockChange::ClockChange(const BoardFolder &folder, Wakes wakes) : folder_(folder), wakes_(wakes) {
    std::atomic_ref(folder.board()->clock.changes).fetch_or(1, std::memory_order_acq_rel);
}

ClockChange::~ClockChange() {
    std::atomic_ref(folder_.board()->clock.changes).fetch_add(1, std::memory_order_release);
    if (wakes_ == Wakes::All)
        wakeAll(folder_);
}

void wake(const BoardFolder &folder, Waiter &waiter) {
    const WaitKind kind = waiter.kind;
    call(waiter);
    if (kind != WaitKind::Lock)
        wakeAll(folder);
}

void wakeAll(const BoardFolder &folder) {
    // They have a reader's end of this pipe among their descriptors, and see that it ends.
    const int savedErrno = errno;
    if (const int fd = folder.openOwnFile(kWakeFile, O_WRONLY | O_NONBLOCK); fd >= 0)
        kernel::close(fd);
    errno = savedErrno; // without a reader there is nobody to call
}

void mendClock(Clock &clock, const HostTime &host) {
    clock.changes += clock.changes % 2;
    clock.difference = differenceOf(clock);
    // The host's monotonic clock begins anew when it starts. One with a pace of its own goes on.
    if (clock.difference != Difference::Pace || host.monotonicNs >= clock.anchorMonotonicNs)
        return;
    clock.monotonicLeadNs += static_cast<int64_t>(clock.anchorMonotonicNs - host.monotonicNs);
    clock.anchorMonotonicNs = host.monotonicNs;
}

} // namespace vb
