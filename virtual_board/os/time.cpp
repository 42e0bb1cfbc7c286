// Sleeps. On a board with virtual time they advance the board's clock and return at once.

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timespec64.h"

#include <cerrno>
#include <pthread.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr uint64_t kNsPerSecond = 1000000000;

/** Records a sleep; true when it is over already. */
bool sleepOnBoard(uint64_t ns) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr)
        return false;
    const int savedErrno = errno;
    bool isVirtual = false;
    {
        const vb::BoardLock lock(*folder);
        if (!lock.isHeld()) {
            errno = savedErrno;
            return false; // the board is gone, and its time with it
        }
        vb::Board &board = *folder->board();
        vb::traceNext(board.trace, vb::TraceKind::Sleep, vb::thisSender(board)).sleepNs = ns;
        isVirtual = board.clock.mode == vb::TimeMode::Virtual;
        if (isVirtual)
            board.clock.sleptNs += ns;
        vb::pollRegisterPage(*folder);
    }
    errno = savedErrno;
    if (isVirtual) {
        sched_yield();
        pthread_testcancel(); // as in every sleep
    }
    return isVirtual;
}

template <typename Time>
bool isDuration(const Time &time) {
    return time.tv_sec >= 0 && time.tv_nsec >= 0 &&
           static_cast<uint64_t>(time.tv_nsec) < kNsPerSecond;
}

/** Sleeps for a valid duration; an invalid one is left to the C library to refuse. */
template <typename Time>
bool sleepFor(const Time *address) {
    Time time = {};
    return vb::attachedFolder() != nullptr && vb::copyFromUser(&time, address, sizeof(time)) &&
           isDuration(time) &&
           sleepOnBoard(static_cast<uint64_t>(time.tv_sec) * kNsPerSecond +
                        static_cast<uint64_t>(time.tv_nsec));
}

} // namespace

VB_SEAM(int, usleep, useconds_t us) {
    return sleepOnBoard(uint64_t{us} * 1000) ? 0 : VB_NEXT(usleep)(us);
}

VB_SEAM(unsigned, sleep, unsigned seconds) {
    return sleepOnBoard(seconds * kNsPerSecond) ? 0 : VB_NEXT(sleep)(seconds);
}

VB_SEAM(int, nanosleep, const timespec *time, timespec *rest) {
    return sleepFor(time) ? 0 : VB_NEXT(nanosleep)(time, rest);
}

VB_SEAM(int, __nanosleep64, const vb::Timespec64 *time, vb::Timespec64 *rest) {
    return sleepFor(time) ? 0 : VB_NEXT(__nanosleep64)(time, rest);
}

// A sleep until a point of time refers to the host's clocks, which go on as they are.
VB_SEAM(int, clock_nanosleep, clockid_t clock, int flags, const timespec *time, timespec *rest) {
    const bool isOver = (flags & TIMER_ABSTIME) == 0 && sleepFor(time);
    return isOver ? 0 : VB_NEXT(clock_nanosleep)(clock, flags, time, rest);
}

VB_SEAM(int, __clock_nanosleep_time64, clockid_t clock, int flags, const vb::Timespec64 *time,
        vb::Timespec64 *rest) {
    const bool isOver = (flags & TIMER_ABSTIME) == 0 && sleepFor(time);
    return isOver ? 0 : VB_NEXT(__clock_nanosleep_time64)(clock, flags, time, rest);
}

void vb::letTimePass(uint64_t ns) {
    {
        const BoardLock lock(*attachedFolder());
        if (!lock.isHeld())
            return;
        Clock &clock = attachedFolder()->board()->clock;
        if (clock.mode == TimeMode::Virtual) {
            clock.sleptNs += ns;
            return;
        }
    }
    const timespec time = {static_cast<time_t>(ns / kNsPerSecond),
                           static_cast<long>(ns % kNsPerSecond)};
    VB_NEXT(nanosleep)(&time, nullptr);
}
