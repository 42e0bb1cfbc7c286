// Sleeps. On a board with virtual time they move the board's clock and return at once; where its
// clocks have a pace of their own they wait by them.

#include "virtual_board/os/board_wait.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <pthread.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

namespace {

enum class Sleeps { OnHost, ByBoard, NotAtAll };

/** Records a sleep; how the program goes on. */
Sleeps noteSleep(uint64_t ns) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr)
        return Sleeps::OnHost;
    const int savedErrno = errno;
    Sleeps how = Sleeps::OnHost; // where the board is gone, and its time with it
    {
        const vb::BoardLock lock(*folder);
        if (lock.isHeld()) {
            vb::Board &board = *folder->board();
            vb::traceNext(board.trace, vb::TraceKind::Sleep, vb::thisSender(board)).sleepNs = ns;
            if (board.clock.pace.mode == vb::TimeMode::Virtual) {
                moveClock(board.clock, ns);
                how = Sleeps::NotAtAll;
            } else if (vb::waitsByBoard()) {
                how = Sleeps::ByBoard;
            }
            vb::pollRegisterPage(*folder);
        }
    }
    errno = savedErrno;
    return how;
}

/** Sleeps; what is left when a signal comes. False: it is for the C library to do. */
bool sleepOnBoard(uint64_t ns, uint64_t &left) {
    left = 0;
    switch (noteSleep(ns)) {
    case Sleeps::OnHost:
        return false;
    case Sleeps::ByBoard:
        left = vb::sleepByBoard(vb::Deadline::in(ns));
        return true;
    case Sleeps::NotAtAll:
        sched_yield();
        pthread_testcancel(); // as in every sleep
        break;
    }
    return true;
}

/** How long a program sleeps that has given a valid time; others are the C library's to refuse. */
template <typename Time>
bool readSleep(const Time *address, uint64_t &ns) {
    return vb::attachedFolder() != nullptr && vb::readDurationAt(address, ns);
}

/** Whether the kernel lets a program sleep by a clock that boards have of their own. */
bool canSleepBy(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC || clock == CLOCK_BOOTTIME;
}

enum class Fails { InErrno, AsResult };

/** What a sleep returns that signals can end. */
template <typename Time>
int endOfSleep(uint64_t left, Time *rest, Fails fails) {
    if (left == 0)
        return 0;
    if (rest != nullptr)
        *rest = vb::durationOf<Time>(left);
    return fails == Fails::AsResult ? EINTR : vb::failWith(EINTR);
}

template <typename Time, typename Next>
int sleepFor(const Time *address, Time *rest, Fails fails, Next next) {
    uint64_t ns = 0;
    uint64_t left = 0;
    return readSleep(address, ns) && sleepOnBoard(ns, left) ? endOfSleep(left, rest, fails)
                                                            : next();
}

/** Sleeps until a point of a clock, which a program may have set or whose pace is the board's. */
template <typename Time, typename Next>
int sleepUntil(clockid_t clock, const Time *address, Next next) {
    uint64_t ns = 0;
    if (!vb::isOffHost(clock) || !readSleep(address, ns))
        return next();
    const vb::Deadline deadline = vb::Deadline::at(clock, static_cast<int64_t>(ns));
    if (vb::waitsByBoard())
        noteSleep(deadline.left(vb::ProgramsClock()));
    return vb::sleepByBoard(deadline) == 0 ? 0 : EINTR;
}

} // namespace

VB_SEAM(int, usleep, useconds_t us) {
    uint64_t left = 0;
    return sleepOnBoard(us * vb::kNsPerUs, left)
               ? endOfSleep<timespec>(left, nullptr, Fails::InErrno)
               : VB_NEXT(usleep)(us);
}

VB_SEAM(unsigned, sleep, unsigned seconds) {
    uint64_t left = 0;
    if (!sleepOnBoard(seconds * vb::kNsPerSecond, left))
        return VB_NEXT(sleep)(seconds);
    return static_cast<unsigned>(left / vb::kNsPerSecond);
}

#define VB_SEAM_NANOSLEEP(symbol, Time)                                                            \
    VB_SEAM(int, symbol, const Time *time, vb::PointerTo<Time> rest) {                             \
        return sleepFor(time, rest, Fails::InErrno, [=] { return VB_NEXT(symbol)(time, rest); });  \
    }
VB_SEAM_NANOSLEEP(nanosleep, timespec)
VB_SEAM_NANOSLEEP(__nanosleep64, vb::Timespec64)

#define VB_SEAM_CLOCK_NANOSLEEP(symbol, Time)                                                      \
    VB_SEAM(int, symbol, clockid_t clock, int flags, const Time *time, vb::PointerTo<Time> rest) { \
        const auto next = [=] { return VB_NEXT(symbol)(clock, flags, time, rest); };               \
        if (!canSleepBy(clock))                                                                    \
            return next();                                                                         \
        return (flags & TIMER_ABSTIME) != 0 ? sleepUntil(clock, time, next)                        \
                                            : sleepFor(time, rest, Fails::AsResult, next);         \
    }
VB_SEAM_CLOCK_NANOSLEEP(clock_nanosleep, timespec)
VB_SEAM_CLOCK_NANOSLEEP(__clock_nanosleep_time64, vb::Timespec64)

// C11's, which on virtual time sleeps on the host.
#define VB_SEAM_THRD_SLEEP(symbol, Time)                                                           \
    VB_SEAM(int, symbol, const Time *time, vb::PointerTo<Time> rest) {                             \
        if (!vb::waitsByBoard())                                                                   \
            return VB_NEXT(symbol)(time, rest);                                                    \
        const int result =                                                                         \
            sleepFor(time, rest, Fails::AsResult, [=] { return VB_NEXT(symbol)(time, rest); });    \
        return result == EINTR ? -1 : result;                                                      \
    }
VB_SEAM_THRD_SLEEP(thrd_sleep, timespec)
VB_SEAM_THRD_SLEEP(__thrd_sleep64, vb::Timespec64)

void vb::letTimePass(uint64_t ns) {
    if (waitsByBoard()) {
        sleepByBoard(Deadline::in(ns));
        return;
    }
    {
        const BoardLock lock(*attachedFolder());
        if (!lock.isHeld())
            return;
        Clock &clock = attachedFolder()->board()->clock;
        if (clock.pace.mode == TimeMode::Virtual) {
            moveClock(clock, ns);
            return;
        }
    }
    const auto time = durationOf<timespec>(ns);
    VB_NEXT(nanosleep)(&time, nullptr);
}
