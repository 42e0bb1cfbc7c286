// Calls of the kernel by their numbers, as the run-time libraries of languages make them. Those
// that read the clocks or wait by them are answered as the C library's functions are; all others go
// on.

#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/sliced_wait.h"

#include <cerrno>
#include <cstdarg>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <type_traits>

// The functions of 64-bit time, which only 32-bit systems have beside the others.
extern "C" {
int __clock_gettime64(clockid_t clock, vb::Timespec64 *time);
int __clock_nanosleep_time64(clockid_t clock, int flags, const vb::Timespec64 *time,
                             vb::Timespec64 *rest);
}

namespace {

using vb::Deadline;

constexpr int kMostArguments = 7; // that any system's calls have

/** One call, with more arguments than it may have. */
struct Call {
    long number;
    long argument[kMostArguments];

    template <typename Type>
    Type get(int index) const {
        if constexpr (std::is_pointer_v<Type>)
            return reinterpret_cast<Type>(argument[index]);
        else
            return static_cast<Type>(argument[index]);
    }
};

long next(const Call &call);

// futex

/** Until when a wait for a futex goes on; false for one that is the kernel's alone. */
template <typename Time>
bool readFutexWait(const Call &call, Deadline &deadline) {
    const int operation = call.get<int>(1);
    const int kind = operation & FUTEX_CMD_MASK;
    const clockid_t clock =
        (operation & FUTEX_CLOCK_REALTIME) != 0 ? CLOCK_REALTIME : CLOCK_MONOTONIC;
    const auto *timeout = call.get<const Time *>(3);
    uint64_t ns = 0;
    const bool isPoint = kind == FUTEX_WAIT_BITSET && vb::isOffHost(clock);
    const bool isLength = kind == FUTEX_WAIT && vb::waitsByBoard();
    if ((!isPoint && !isLength) || timeout == nullptr || !vb::readDurationAt(timeout, ns))
        return false;
    deadline = isPoint ? Deadline::at(clock, static_cast<int64_t>(ns)) : Deadline::in(ns);
    return true;
}

/** Waits on the host for ns at most, as a call wants to. */
long waitForFutex(const Call &call, uint64_t ns) {
    constexpr long kAll = -1; // FUTEX_BITSET_MATCH_ANY
    const int operation = call.get<int>(1);
    const long bits = (operation & FUTEX_CMD_MASK) == FUTEX_WAIT ? kAll : call.argument[5];
    const uint64_t end = vb::kernel::clockNow(CLOCK_MONOTONIC) + ns;
    const struct { // as this call wants it on every system
        long seconds, ns;
    } point = {static_cast<long>(end / vb::kNsPerSecond),
               static_cast<long>(end % vb::kNsPerSecond)};
    return vb::kernel::call(SYS_futex, call.argument[0],
                            FUTEX_WAIT_BITSET | (operation & FUTEX_PRIVATE_FLAG), call.argument[2],
                            &point, nullptr, bits);
}

template <typename Time>
long answerFutex(const Call &call) {
    Deadline deadline = Deadline::never();
    if (!readFutexWait<Time>(call, deadline))
        return next(call);
    return vb::waitInSlices(
        deadline, [&](uint64_t ns) { return waitForFutex(call, ns); },
        [](long result) { return result == -1 && errno == ETIMEDOUT; });
}

// Clocks and sleeps, for which the C library has functions. The kernel looks at the addresses.

template <typename Time>
long answerClock(const Call &call, int (*tell)(clockid_t, Time *)) {
    const auto clock = call.get<clockid_t>(0);
    const long result = next(call);
    return result == 0 && vb::isOffHost(clock) ? tell(clock, call.get<Time *>(1)) : result;
}

long answerTimeOfDay(const Call &call) {
    auto *time = call.get<timeval *>(0);
    const long result = next(call);
    return result == 0 && time != nullptr ? gettimeofday(time, nullptr) : result;
}

/** A function that returns its error, where the kernel's call leaves it in errno. */
long inErrno(int error) {
    return error == 0 ? 0 : vb::failWith(error);
}

template <typename Time>
long answerSleep(const Call &call, int (*sleepBy)(clockid_t, int, const Time *, Time *)) {
    const bool isPoint = (call.get<int>(1) & TIMER_ABSTIME) != 0;
    if (!isPoint && !vb::waitsByBoard())
        return next(call); // by its number, virtual time knows no sleep
    return inErrno(sleepBy(call.get<clockid_t>(0), call.get<int>(1), call.get<const Time *>(2),
                           call.get<Time *>(3)));
}

long answer(const Call &call) {
    switch (call.number) {
    case SYS_futex:
        return answerFutex<timespec>(call);
    case SYS_clock_gettime:
        return answerClock<timespec>(call, clock_gettime);
    case SYS_gettimeofday:
        return answerTimeOfDay(call);
    case SYS_nanosleep:
        return vb::waitsByBoard()
                   ? nanosleep(call.get<const timespec *>(0), call.get<timespec *>(1))
                   : next(call);
    case SYS_clock_nanosleep:
        return answerSleep<timespec>(call, clock_nanosleep);
#ifdef SYS_futex_time64
    case SYS_futex_time64:
        return answerFutex<vb::Timespec64>(call);
    case SYS_clock_gettime64:
        return answerClock<vb::Timespec64>(call, __clock_gettime64);
    case SYS_clock_nanosleep_time64:
        return answerSleep<vb::Timespec64>(call, __clock_nanosleep_time64);
#endif
    default:
        return next(call);
    }
}

/** As many as a call can have, as the C library takes them: nobody knows how many were given. */
[[gnu::no_sanitize_address]] void takeArguments(Call &call, va_list arguments) {
    for (long &argument : call.argument)
        argument = va_arg(arguments, long);
}

} // namespace

VB_SEAM(long, syscall, long number, ...) {
    Call call = {number, {}};
    va_list arguments;
    va_start(arguments, number);
    takeArguments(call, arguments);
    va_end(arguments);
    return vb::clockDifference() == vb::Difference::None ? next(call) : answer(call);
}

namespace {

long next(const Call &call) {
    const long *argument = call.argument;
    return VB_NEXT(syscall)(call.number, argument[0], argument[1], argument[2], argument[3],
                            argument[4], argument[5], argument[6]);
}

} // namespace
