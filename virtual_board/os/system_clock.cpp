// The clocks that programs read. One that sets the system clock sets the board's, which from then
// on is so far off; the host's own stays as it is. Those that count what processors do are the
// host's.

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/programs_clock.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timespec64.h"

#include <cerrno>
#include <sys/time.h>
#include <time.h>

namespace {

constexpr int64_t kNsPerSecond = 1000000000;
constexpr int64_t kNsPerMicrosecond = 1000;

// Where the kernel's time ends: 30 years before its nanoseconds do, so that it can run on.
constexpr int64_t kEndOfTime = 8277292036;

bool isSetOnBoard(clockid_t clock) {
    return clock == CLOCK_REALTIME && vb::attachedFolder() != nullptr;
}

/** Sets the board's clock, or refuses what the kernel does. */
int setClock(int64_t seconds, int64_t ns) {
    if (seconds < 0 || seconds >= kEndOfTime || ns < 0 || ns >= kNsPerSecond)
        return vb::failWith(EINVAL);
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const vb::BoardLock lock(folder);
    if (!lock.isHeld())
        return vb::failWith(EPERM); // the board is gone
    vb::ClockChange clock(folder);
    const int64_t unset = systemClockNow(*clock, vb::hostTime()) - clock->systemOffsetNs;
    setSystemOffset(*clock, seconds * kNsPerSecond + ns - unset);
    return 0;
}

template <typename Time>
int setClock(const Time *address) {
    Time time = {};
    return vb::copyFromUser(&time, address, sizeof(time)) ? setClock(time.tv_sec, time.tv_nsec)
                                                          : vb::failWith(EFAULT);
}

/** Without a time it is the zone that is set, which a board has none of. */
template <typename Time>
int setTimeOfDay(const Time *address, const void *zone) {
    if (address == nullptr)
        return 0;
    Time time = {};
    if (!vb::copyFromUser(&time, address, sizeof(time)))
        return vb::failWith(EFAULT);
    if (zone != nullptr || time.tv_usec < 0 || time.tv_usec >= kNsPerSecond / kNsPerMicrosecond)
        return vb::failWith(EINVAL);
    return setClock(time.tv_sec, time.tv_usec * kNsPerMicrosecond);
}

int64_t boardNow(clockid_t clock) {
    const vb::ProgramsClock now;
    return vb::isSystemClock(clock) ? now.systemNs() : now.monotonicNs();
}

/** Stores the board's time; seconds of 32 bits may not hold it. */
template <typename Seconds, typename Fraction>
int storeNow(clockid_t clock, Seconds &seconds, Fraction &fraction, int64_t nsOfFraction) {
    const int64_t now = boardNow(clock);
    const auto whole = static_cast<Seconds>(now / kNsPerSecond);
    if (whole != now / kNsPerSecond)
        return vb::failWith(EOVERFLOW);
    seconds = whole;
    fraction = static_cast<Fraction>(now % kNsPerSecond / nsOfFraction);
    return 0;
}

/** Replaces what the C library has answered to a question for a clock. */
template <typename Time>
int answer(int result, clockid_t clock, Time *time) {
    return result == 0 && vb::isOffHost(clock) ? storeNow(clock, time->tv_sec, time->tv_nsec, 1)
                                               : result;
}

template <typename Time>
int answerTimeOfDay(int result, Time *time) {
    return result == 0 && vb::isOffHost(CLOCK_REALTIME) && time != nullptr
               ? storeNow(CLOCK_REALTIME, time->tv_sec, time->tv_usec, kNsPerMicrosecond)
               : result;
}

/** C11's, which tells with 0 that it fails. */
template <typename Time>
int answerBase(int base, Time *time) {
    const bool isTold = base != TIME_UTC || !vb::isOffHost(CLOCK_REALTIME) ||
                        storeNow(CLOCK_REALTIME, time->tv_sec, time->tv_nsec, 1) == 0;
    return isTold ? base : 0;
}

template <typename Seconds>
Seconds answerSeconds(Seconds now, Seconds *out) {
    int64_t fraction = 0;
    if (vb::isOffHost(CLOCK_REALTIME) && storeNow(CLOCK_REALTIME, now, fraction, 1) != 0)
        now = -1;
    else if (out != nullptr)
        *out = now;
    return now;
}

} // namespace

VB_SEAM(int, clock_settime, clockid_t clock, const timespec *time) {
    return isSetOnBoard(clock) ? setClock(time) : VB_NEXT(clock_settime)(clock, time);
}

VB_SEAM(int, __clock_settime64, clockid_t clock, const vb::Timespec64 *time) {
    return isSetOnBoard(clock) ? setClock(time) : VB_NEXT(__clock_settime64)(clock, time);
}

VB_SEAM(int, settimeofday, const timeval *time, const void *zone) {
    return isSetOnBoard(CLOCK_REALTIME) ? setTimeOfDay(time, zone)
                                        : VB_NEXT(settimeofday)(time, zone);
}

VB_SEAM(int, __settimeofday64, const vb::Timeval64 *time, const void *zone) {
    return isSetOnBoard(CLOCK_REALTIME) ? setTimeOfDay(time, zone)
                                        : VB_NEXT(__settimeofday64)(time, zone);
}

VB_SEAM(int, clock_gettime, clockid_t clock, timespec *time) {
    return answer(VB_NEXT(clock_gettime)(clock, time), clock, time);
}

VB_SEAM(int, __clock_gettime64, clockid_t clock, vb::Timespec64 *time) {
    return answer(VB_NEXT(__clock_gettime64)(clock, time), clock, time);
}

VB_SEAM(time_t, time, time_t *out) {
    return answerSeconds(VB_NEXT(time)(nullptr), out);
}

VB_SEAM(int64_t, __time64, int64_t *out) {
    return answerSeconds(VB_NEXT(__time64)(nullptr), out);
}

VB_SEAM(int, gettimeofday, timeval *time, void *zone) {
    return answerTimeOfDay(VB_NEXT(gettimeofday)(time, zone), time);
}

VB_SEAM(int, __gettimeofday64, vb::Timeval64 *time, void *zone) {
    return answerTimeOfDay(VB_NEXT(__gettimeofday64)(time, zone), time);
}

VB_SEAM(int, timespec_get, timespec *time, int base) {
    return answerBase(VB_NEXT(timespec_get)(time, base), time);
}

VB_SEAM(int, __timespec_get64, vb::Timespec64 *time, int base) {
    return answerBase(VB_NEXT(__timespec_get64)(time, base), time);
}
