// Waits for signals. Those with a time-out have it in the programs' time; of the others a thread
// looks after the timers of its process, which send some.

#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>

namespace {

using vb::Deadline;

/** Takes a signal that is there; EAGAIN without one. */
int takeSignal(const sigset_t *signals, siginfo_t *info);

/** As sigtimedwait. */
int waitForSignal(const sigset_t *signals, siginfo_t *info, const Deadline &deadline) {
    for (;;) {
        int signal = takeSignal(signals, info);
        if (signal >= 0 || errno != EAGAIN)
            return signal;
        // Readable as soon as one is there.
        const int fd = signalfd(-1, signals, SFD_CLOEXEC | SFD_NONBLOCK);
        if (fd < 0)
            return -1;
        const int ready = vb::waitForDescriptor(fd, POLLIN, deadline);
        const int error = errno;
        vb::kernel::close(fd);
        errno = ready == 0 ? EAGAIN : error;
        if (ready <= 0)
            return -1;
    }
}

template <typename Time, typename Next>
int sigtimedwaitWith(const sigset_t *signals, siginfo_t *info, const Time *timeout, Next next) {
    uint64_t ns = 0;
    if (!vb::waitsByBoard())
        return next();
    if (timeout == nullptr)
        return waitForSignal(signals, info, Deadline::never());
    const bool isWait = vb::readDurationAt(timeout, ns) && ns != 0;
    return isWait ? waitForSignal(signals, info, Deadline::in(ns)) : next();
}

} // namespace

#define VB_SEAM_SIGTIMEDWAIT(symbol, Time)                                                         \
    VB_SEAM(int, symbol, const sigset_t *signals, siginfo_t *info, const Time *timeout) {          \
        return sigtimedwaitWith(signals, info, timeout,                                            \
                                [=] { return VB_NEXT(symbol)(signals, info, timeout); });          \
    }
VB_SEAM_SIGTIMEDWAIT(sigtimedwait, timespec)
VB_SEAM_SIGTIMEDWAIT(__sigtimedwait64, vb::Timespec64)

VB_SEAM(int, sigwaitinfo, const sigset_t *signals, siginfo_t *info) {
    return vb::waitsByBoard() ? waitForSignal(signals, info, Deadline::never())
                              : VB_NEXT(sigwaitinfo)(signals, info);
}

VB_SEAM(int, sigwait, const sigset_t *signals, int *signal) {
    if (!vb::waitsByBoard())
        return VB_NEXT(sigwait)(signals, signal);
    int taken = -1;
    do
        taken = waitForSignal(signals, nullptr, Deadline::never());
    while (taken < 0 && errno == EINTR);
    if (taken < 0)
        return errno;
    *signal = taken;
    return 0;
}

VB_SEAM(int, pause) {
    return vb::waitsByBoard() ? vb::waitForHandler(nullptr) : VB_NEXT(pause)();
}

VB_SEAM(int, sigsuspend, const sigset_t *signals) {
    return vb::waitsByBoard() ? vb::waitForHandler(signals) : VB_NEXT(sigsuspend)(signals);
}

namespace {

int takeSignal(const sigset_t *signals, siginfo_t *info) {
    return VB_NEXT(sigtimedwait)(signals, info, &vb::kNow);
}

} // namespace
