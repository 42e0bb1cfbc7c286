// Waits for locks, semaphores, threads and messages whose time-out is in the programs' time.

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/sliced_wait.h"

#include <aio.h>
#include <cerrno>
#include <mqueue.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/sem.h>
#include <threads.h>

namespace {

using vb::Deadline;

/** A point of the host's system clock; that has passed when ns is 0. */
timespec onHost(uint64_t ns) {
    return ns == 0 ? timespec{0, 0} : vb::durationOf<timespec>(vb::hostNow() + ns);
}

/**
 * Waits until a point of one of the programs' clocks. What the C library refuses, or what goes
 * by the host's, next does.
 */
template <typename Time, typename Next, typename Try, typename IsOver>
auto waitUntil(clockid_t clock, const Time *time, Next next, Try tryUntil, IsOver isOver) {
    uint64_t ns = 0;
    const bool isClock = clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC;
    return isClock && vb::isOffHost(clock) && vb::readDurationAt(time, ns)
               ? vb::waitInSlices(
                     Deadline::at(clock, static_cast<int64_t>(ns)),
                     [=](uint64_t hostNs) {
                         const timespec end = onHost(hostNs);
                         return tryUntil(&end);
                     },
                     isOver)
               : next();
}

/** Functions that return an error, and those that leave it in errno. */
bool isTimedOut(int result) {
    return result == ETIMEDOUT;
}
bool hasTimedOut(ssize_t result) {
    return result == -1 && errno == ETIMEDOUT;
}
/** C11's have a code of their own. */
bool isTimedOutInC(int result) {
    return result == thrd_timedout;
}

} // namespace

// Functions for an object that wait until a point of the system clock, or of a clock that is given.
// In slices the former is used in either case.

#define VB_SEAM_TIMED(symbol, Object, Time, timed, isOver)                                         \
    VB_SEAM(int, symbol, vb::PointerTo<Object> object, const Time *time) {                         \
        return waitUntil(                                                                          \
            CLOCK_REALTIME, time, [=] { return VB_NEXT(symbol)(object, time); },                   \
            [=](const timespec *end) { return VB_NEXT(timed)(object, end); }, isOver);             \
    }
#define VB_SEAM_CLOCKED(symbol, Object, Time, timed, isOver)                                       \
    VB_SEAM(int, symbol, vb::PointerTo<Object> object, clockid_t clock, const Time *time) {        \
        return waitUntil(                                                                          \
            clock, time, [=] { return VB_NEXT(symbol)(object, clock, time); },                     \
            [=](const timespec *end) { return VB_NEXT(timed)(object, end); }, isOver);             \
    }

#define VB_SEAM_LOCKS(timedName, timed64, clockedName, clocked64, Object, isOver)                  \
    VB_SEAM_TIMED(timedName, Object, timespec, timedName, isOver)                                  \
    VB_SEAM_TIMED(timed64, Object, vb::Timespec64, timedName, isOver)                              \
    VB_SEAM_CLOCKED(clockedName, Object, timespec, timedName, isOver)                              \
    VB_SEAM_CLOCKED(clocked64, Object, vb::Timespec64, timedName, isOver)

VB_SEAM_LOCKS(pthread_mutex_timedlock, __pthread_mutex_timedlock64, pthread_mutex_clocklock,
              __pthread_mutex_clocklock64, pthread_mutex_t, isTimedOut)
VB_SEAM_LOCKS(pthread_rwlock_timedrdlock, __pthread_rwlock_timedrdlock64,
              pthread_rwlock_clockrdlock, __pthread_rwlock_clockrdlock64, pthread_rwlock_t,
              isTimedOut)
VB_SEAM_LOCKS(pthread_rwlock_timedwrlock, __pthread_rwlock_timedwrlock64,
              pthread_rwlock_clockwrlock, __pthread_rwlock_clockwrlock64, pthread_rwlock_t,
              isTimedOut)
VB_SEAM_LOCKS(sem_timedwait, __sem_timedwait64, sem_clockwait, __sem_clockwait64, sem_t,
              hasTimedOut)
VB_SEAM_TIMED(mtx_timedlock, mtx_t, timespec, mtx_timedlock, isTimedOutInC)
VB_SEAM_TIMED(__mtx_timedlock64, mtx_t, vb::Timespec64, mtx_timedlock, isTimedOutInC)

// System V semaphores, of whose time-outs the length is given. Operations that do not wait fail as
// those do whose time is over.
namespace {

/** Whether all of them wait; operations that cannot be read are the kernel's to refuse. */
bool doWait(const sembuf *operations, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        sembuf operation = {};
        if (!vb::copyFromUser(&operation, operations + i, sizeof(operation)) ||
            (operation.sem_flg & IPC_NOWAIT) != 0)
            return false;
    }
    return true;
}

/** Waits for a length of time in slices, at the end of which a function fails with EAGAIN. */
template <typename Time, typename Next, typename Try>
int waitFor(const Time *timeout, Next next, Try tryFor) {
    uint64_t ns = 0;
    if (!vb::waitsByBoard() || timeout == nullptr || !vb::readDurationAt(timeout, ns))
        return next();
    return vb::waitInSlices(
        Deadline::in(ns),
        [=](uint64_t hostNs) {
            const auto slice = vb::durationOf<timespec>(hostNs);
            return tryFor(&slice);
        },
        [](int result) { return result != 0 && errno == EAGAIN; });
}

} // namespace

#define VB_SEAM_SEMTIMEDOP(symbol, Time)                                                           \
    VB_SEAM(int, symbol, int set, sembuf *operations, size_t count, const Time *timeout) {         \
        const auto next = [=] { return VB_NEXT(symbol)(set, operations, count, timeout); };        \
        return doWait(operations, count)                                                           \
                   ? waitFor(timeout, next,                                                        \
                             [=](const timespec *slice) {                                          \
                                 return VB_NEXT(semtimedop)(set, operations, count, slice);        \
                             })                                                                    \
                   : next();                                                                       \
    }
VB_SEAM_SEMTIMEDOP(semtimedop, timespec)
VB_SEAM_SEMTIMEDOP(__semtimedop64, vb::Timespec64)

// Requests to files that go on beside the program.
#define VB_SEAM_AIO_SUSPEND(symbol, Time)                                                          \
    VB_SEAM(int, symbol, const aiocb *const *requests, int count, const Time *timeout) {           \
        return waitFor(                                                                            \
            timeout, [=] { return VB_NEXT(symbol)(requests, count, timeout); },                    \
            [=](const timespec *slice) { return VB_NEXT(aio_suspend)(requests, count, slice); });  \
    }
VB_SEAM_AIO_SUSPEND(aio_suspend, timespec)
VB_SEAM_AIO_SUSPEND(aio_suspend64, timespec)
VB_SEAM_AIO_SUSPEND(__aio_suspend_time64, vb::Timespec64)

#define VB_SEAM_TIMEDJOIN(symbol, Time)                                                            \
    VB_SEAM(int, symbol, pthread_t thread, void **result, const Time *time) {                      \
        const auto next = [=] { return VB_NEXT(symbol)(thread, result, time); };                   \
        return time == nullptr                                                                     \
                   ? next()                                                                        \
                   : waitUntil(                                                                    \
                         CLOCK_REALTIME, time, next,                                               \
                         [=](const timespec *end) {                                                \
                             return VB_NEXT(pthread_timedjoin_np)(thread, result, end);            \
                         },                                                                        \
                         isTimedOut);                                                              \
    }
VB_SEAM_TIMEDJOIN(pthread_timedjoin_np, timespec)
VB_SEAM_TIMEDJOIN(__pthread_timedjoin_np64, vb::Timespec64)

#define VB_SEAM_CLOCKJOIN(symbol, Time)                                                            \
    VB_SEAM(int, symbol, pthread_t thread, void **result, clockid_t clock, const Time *time) {     \
        const auto next = [=] { return VB_NEXT(symbol)(thread, result, clock, time); };            \
        return time == nullptr                                                                     \
                   ? next()                                                                        \
                   : waitUntil(                                                                    \
                         clock, time, next,                                                        \
                         [=](const timespec *end) {                                                \
                             return VB_NEXT(pthread_timedjoin_np)(thread, result, end);            \
                         },                                                                        \
                         isTimedOut);                                                              \
    }
VB_SEAM_CLOCKJOIN(pthread_clockjoin_np, timespec)
VB_SEAM_CLOCKJOIN(__pthread_clockjoin_np64, vb::Timespec64)

#define VB_SEAM_MQ_TIMEDRECEIVE(symbol, Time)                                                      \
    VB_SEAM(ssize_t, symbol, mqd_t queue, char *message, size_t size, unsigned *priority,          \
            const Time *time) {                                                                    \
        return waitUntil(                                                                          \
            CLOCK_REALTIME, time,                                                                  \
            [=] { return VB_NEXT(symbol)(queue, message, size, priority, time); },                 \
            [=](const timespec *end) {                                                             \
                return VB_NEXT(mq_timedreceive)(queue, message, size, priority, end);              \
            },                                                                                     \
            hasTimedOut);                                                                          \
    }
VB_SEAM_MQ_TIMEDRECEIVE(mq_timedreceive, timespec)
VB_SEAM_MQ_TIMEDRECEIVE(__mq_timedreceive_time64, vb::Timespec64)

#define VB_SEAM_MQ_TIMEDSEND(symbol, Time)                                                         \
    VB_SEAM(int, symbol, mqd_t queue, const char *message, size_t size, unsigned priority,         \
            const Time *time) {                                                                    \
        return waitUntil(                                                                          \
            CLOCK_REALTIME, time,                                                                  \
            [=] { return VB_NEXT(symbol)(queue, message, size, priority, time); },                 \
            [=](const timespec *end) {                                                             \
                return VB_NEXT(mq_timedsend)(queue, message, size, priority, end);                 \
            },                                                                                     \
            hasTimedOut);                                                                          \
    }
VB_SEAM_MQ_TIMEDSEND(mq_timedsend, timespec)
VB_SEAM_MQ_TIMEDSEND(__mq_timedsend_time64, vb::Timespec64)
