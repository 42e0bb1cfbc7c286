// Condition variables. A wait for one cannot be cut into slices, between which a signal would be
// lost, so that these are the board's own, in the memory of the C library's and from the first one
// on: a count of signals, which waiters watch.

#include "virtual_board/os/board_wait.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <pthread.h>
#include <threads.h>

namespace {

using vb::Deadline;

/** What is in the memory of a condition. A static one is all zeros. */
struct Condition {
    uint32_t signals;   // that were sent; a word of the kernel's
    uint32_t waiters;   // in its memory
    uint32_t isLeaving; // somebody waits for the last of them to go
    uint32_t clock;     // of timed waits; CLOCK_REALTIME is 0
};
static_assert(sizeof(Condition) <= sizeof(pthread_cond_t));
static_assert(sizeof(pthread_cond_t) == sizeof(cnd_t) && CLOCK_REALTIME == 0);

template <typename Object>
Condition &conditionIn(Object *object) {
    return *reinterpret_cast<Condition *>(object);
}

std::atomic_ref<uint32_t> word(uint32_t &value) {
    return std::atomic_ref(value);
}

void wake(uint32_t &value, int most) {
    vb::kernel::call(SYS_futex, &value, FUTEX_WAKE, most, nullptr, nullptr, 0);
}

constexpr uint64_t kForEver = UINT64_MAX;

// How long a thread waits: next() tells how long it can block, and 0 when the time is over.

struct ForEver {
    uint64_t next() const { return kForEver; }
    void end() {}
};

/** Until a point of a clock that is the host's. */
struct UntilHosts {
    clockid_t clock;
    uint64_t pointNs;

    uint64_t next() const {
        const uint64_t now = vb::kernel::clockNow(clock);
        return pointNs > now ? pointNs - now : 0;
    }
    void end() {}
};

struct UntilBoards {
    vb::BoardWait wait;

    uint64_t next() { return wait.goesOn() ? wait.hostNs() : 0; }
    void end() { wait.end(); }
};

/** One thread's wait, which has given its mutex back. */
template <typename Time>
class Wait {
  public:
    Wait(Condition &condition, pthread_mutex_t *mutex, Time &time)
        : condition_(condition), mutex_(mutex), time_(time),
          before_(word(condition.signals).load()) {
        word(condition_.waiters).fetch_add(1);
    }

    /** Waits for a signal; 0, or ETIMEDOUT. A point of cancellation. */
    int untilSignalled() {
        while (word(condition_.signals).load() == before_) {
            const uint64_t ns = time_.next();
            if (ns == 0)
                return ETIMEDOUT;
            block(ns);
        }
        return 0;
    }

    /** Leaves the condition's memory, which may go from then on. */
    void leave() {
        time_.end();
        if (word(condition_.waiters).fetch_sub(1) == 1 && word(condition_.isLeaving).load() != 0)
            wake(condition_.waiters, INT_MAX);
    }

  private:
    void block(uint64_t ns) {
        int type = 0;
        pthread_cleanup_push(endCancelled, this);
        pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, &type);
        vb::kernel::waitForChange(&condition_.signals, before_, ns);
        pthread_setcanceltype(type, nullptr);
        pthread_cleanup_pop(0);
    }

    static void endCancelled(void *wait) {
        auto *cancelled = static_cast<Wait *>(wait);
        // A signal may have been for this thread: it is another one's now.
        if (word(cancelled->condition_.signals).load() != cancelled->before_)
            wake(cancelled->condition_.signals, 1);
        cancelled->leave();
        pthread_mutex_lock(cancelled->mutex_);
    }

    Condition &condition_;
    pthread_mutex_t *const mutex_;
    Time &time_;
    const uint32_t before_;
};

template <typename Time>
int waitFor(Condition &condition, pthread_mutex_t *mutex, Time time) {
    pthread_testcancel();
    Wait<Time> wait(condition, mutex, time);
    if (const int error = pthread_mutex_unlock(mutex); error != 0) {
        wait.leave();
        return error;
    }
    const int savedErrno = errno;
    const int result = wait.untilSignalled();
    errno = savedErrno;
    wait.leave();
    const int error = pthread_mutex_lock(mutex);
    return error != 0 ? error : result;
}

/** The nanoseconds of a point of time; what lies before all clocks' time is 0. */
template <typename Time>
bool readPoint(Time time, uint64_t &ns) {
    const bool isLongAgo = time.tv_sec < 0;
    if (isLongAgo)
        time.tv_sec = 0;
    const bool isPoint = vb::readDuration(time, ns);
    ns = isLongAgo ? 0 : ns;
    return isPoint;
}

template <typename Time>
int waitUntil(Condition &condition, pthread_mutex_t *mutex, clockid_t clock, const Time *time) {
    uint64_t ns = 0;
    if ((clock != CLOCK_REALTIME && clock != CLOCK_MONOTONIC) || !readPoint(*time, ns))
        return EINVAL;
    if (!vb::isOffHost(clock))
        return waitFor(condition, mutex, UntilHosts{clock, ns});
    const auto deadline = Deadline::at(clock, static_cast<int64_t>(ns));
    return waitFor(condition, mutex, UntilBoards{{vb::WaitKind::Lock, deadline}});
}

int wait(Condition &condition, pthread_mutex_t *mutex) {
    return waitFor(condition, mutex, ForEver{});
}

void signal(Condition &condition, int most) {
    word(condition.signals).fetch_add(1);
    if (word(condition.waiters).load() != 0)
        wake(condition.signals, most);
}

/** Nobody waits any more; those who were woken last are still on their way. */
void leave(Condition &condition) {
    word(condition.isLeaving).store(1);
    for (uint32_t waiters = 0; (waiters = word(condition.waiters).load()) != 0;)
        vb::kernel::waitForChange(&condition.waiters, waiters, kForEver);
}

clockid_t clockOf(const Condition &condition) {
    return static_cast<clockid_t>(condition.clock);
}

/** C11's results. */
int asThreadResult(int error) {
    return error == 0 ? thrd_success : error == ETIMEDOUT ? thrd_timedout : thrd_error;
}

pthread_mutex_t *mutexIn(mtx_t *mutex) {
    return reinterpret_cast<pthread_mutex_t *>(mutex);
}

} // namespace

VB_SEAM(int, pthread_cond_init, pthread_cond_t *object, const pthread_condattr_t *attributes) {
    clockid_t clock = CLOCK_REALTIME;
    if (attributes != nullptr)
        pthread_condattr_getclock(attributes, &clock);
    conditionIn(object) = {0, 0, 0, static_cast<uint32_t>(clock)};
    return 0;
}

VB_SEAM(int, pthread_cond_destroy, pthread_cond_t *object) {
    leave(conditionIn(object));
    return 0;
}

VB_SEAM(int, pthread_cond_signal, pthread_cond_t *object) {
    signal(conditionIn(object), 1);
    return 0;
}

VB_SEAM(int, pthread_cond_broadcast, pthread_cond_t *object) {
    signal(conditionIn(object), INT_MAX);
    return 0;
}

VB_SEAM(int, pthread_cond_wait, pthread_cond_t *object, pthread_mutex_t *mutex) {
    return wait(conditionIn(object), mutex);
}

#define VB_SEAM_COND_TIMEDWAIT(symbol, Time)                                                       \
    VB_SEAM(int, symbol, pthread_cond_t *object, pthread_mutex_t *mutex, const Time *time) {       \
        Condition &condition = conditionIn(object);                                                \
        return waitUntil(condition, mutex, clockOf(condition), time);                              \
    }
VB_SEAM_COND_TIMEDWAIT(pthread_cond_timedwait, timespec)
VB_SEAM_COND_TIMEDWAIT(__pthread_cond_timedwait64, vb::Timespec64)

#define VB_SEAM_COND_CLOCKWAIT(symbol, Time)                                                       \
    VB_SEAM(int, symbol, pthread_cond_t *object, pthread_mutex_t *mutex, clockid_t clock,          \
            const Time *time) {                                                                    \
        return waitUntil(conditionIn(object), mutex, clock, time);                                 \
    }
VB_SEAM_COND_CLOCKWAIT(pthread_cond_clockwait, timespec)
VB_SEAM_COND_CLOCKWAIT(__pthread_cond_clockwait64, vb::Timespec64)

// C11's.

VB_SEAM(int, cnd_init, cnd_t *object) {
    conditionIn(object) = {};
    return thrd_success;
}

VB_SEAM(void, cnd_destroy, cnd_t *object) {
    leave(conditionIn(object));
}

VB_SEAM(int, cnd_signal, cnd_t *object) {
    signal(conditionIn(object), 1);
    return thrd_success;
}

VB_SEAM(int, cnd_broadcast, cnd_t *object) {
    signal(conditionIn(object), INT_MAX);
    return thrd_success;
}

VB_SEAM(int, cnd_wait, cnd_t *object, mtx_t *mutex) {
    return asThreadResult(wait(conditionIn(object), mutexIn(mutex)));
}

#define VB_SEAM_CND_TIMEDWAIT(symbol, Time)                                                        \
    VB_SEAM(int, symbol, cnd_t *object, mtx_t *mutex, const Time *time) {                          \
        return asThreadResult(                                                                     \
            waitUntil(conditionIn(object), mutexIn(mutex), CLOCK_REALTIME, time));                 \
    }
VB_SEAM_CND_TIMEDWAIT(cnd_timedwait, timespec)
VB_SEAM_CND_TIMEDWAIT(__cnd_timedwait64, vb::Timespec64)
