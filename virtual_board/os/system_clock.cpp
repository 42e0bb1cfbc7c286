// The system clock. A program that sets it sets the board's, which from then on is so far off the
// host's; the host's own stays as it is. Only CLOCK_REALTIME is concerned.

#include "virtual_board/os/seam.h"
#include "virtual_board/os/timespec64.h"

#include <cerrno>
#include <sys/time.h>
#include <time.h>

namespace {

constexpr int64_t kNsPerSecond = 1000000000;
constexpr int64_t kNsPerMicrosecond = 1000;

template <typename Time>
int64_t nsOf(const Time &time) {
    return static_cast<int64_t>(time.tv_sec) * kNsPerSecond + time.tv_nsec;
}

/** How far the board's clock is ahead; 0 where nobody has set it. */
int64_t offsetNs() {
    const vb::BoardFolder *folder = vb::attachedFolder();
    return folder != nullptr ? folder->board()->clock.systemOffsetNs : 0;
}

/** Moves a time of the host's by so much. */
template <typename Time>
void move(Time *time, int64_t ns) {
    const int64_t moved = nsOf(*time) + ns;
    time->tv_sec = static_cast<decltype(time->tv_sec)>(moved / kNsPerSecond);
    time->tv_nsec = static_cast<decltype(time->tv_nsec)>(moved % kNsPerSecond);
}

/** Sets the board's clock; false when the call is not for it. */
template <typename Time>
bool setClock(clockid_t clock, const Time *time) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr || clock != CLOCK_REALTIME || time == nullptr)
        return false;
    const vb::BoardLock lock(*folder);
    folder->board()->clock.systemOffsetNs = nsOf(*time) - static_cast<int64_t>(vb::hostNow());
    return true;
}

/** Whole seconds on the board's clock; what the C library has answered where nobody has set it.
 * Both fractions count, and the C library's answer to this question is a little behind its other
 * clocks.
 */
int64_t wholeSeconds(int64_t answered) {
    const int64_t ns = offsetNs();
    return ns == 0 ? answered : (static_cast<int64_t>(vb::hostNow()) + ns) / kNsPerSecond;
}

/** Moves what the C library has answered to a question for a clock. */
template <typename Time>
int answer(int result, clockid_t clock, Time *time) {
    if (result == 0 && clock == CLOCK_REALTIME && time != nullptr)
        if (const int64_t ns = offsetNs(); ns != 0)
            move(time, ns);
    return result;
}

} // namespace

VB_SEAM(int, clock_settime, clockid_t clock, const timespec *time) {
    return setClock(clock, time) ? 0 : VB_NEXT(clock_settime)(clock, time);
}

VB_SEAM(int, __clock_settime64, clockid_t clock, const vb::Timespec64 *time) {
    return setClock(clock, time) ? 0 : VB_NEXT(__clock_settime64)(clock, time);
}

VB_SEAM(int, clock_gettime, clockid_t clock, timespec *time) {
    return answer(VB_NEXT(clock_gettime)(clock, time), clock, time);
}

VB_SEAM(int, __clock_gettime64, clockid_t clock, vb::Timespec64 *time) {
    return answer(VB_NEXT(__clock_gettime64)(clock, time), clock, time);
}

VB_SEAM(time_t, time, time_t *out) {
    const auto now = static_cast<time_t>(wholeSeconds(VB_NEXT(time)(nullptr)));
    if (out != nullptr)
        *out = now;
    return now;
}

VB_SEAM(int64_t, __time64, int64_t *out) {
    const int64_t now = wholeSeconds(VB_NEXT(__time64)(nullptr));
    if (out != nullptr)
        *out = now;
    return now;
}

VB_SEAM(int, gettimeofday, timeval *time, void *zone) {
    const int result = VB_NEXT(gettimeofday)(time, zone);
    if (const int64_t ns = offsetNs(); result == 0 && time != nullptr && ns != 0) {
        timespec moved = {time->tv_sec, static_cast<long>(time->tv_usec * kNsPerMicrosecond)};
        move(&moved, ns);
        *time = {moved.tv_sec, static_cast<suseconds_t>(moved.tv_nsec / kNsPerMicrosecond)};
    }
    return result;
}
