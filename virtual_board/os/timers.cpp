// Timers: of descriptors, of POSIX, and those that send alarms. A program that arms one while its
// clocks have a pace of their own arms one of the board's. The kernel's is behind it: it is set to
// go off when the board's is due, or at once when somebody who waits finds that it is.

#include "virtual_board/os/timers.h"

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <iterator>
#include <poll.h>
#include <sched.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <utility>

namespace {

constexpr uint64_t kNever = UINT64_MAX;

enum class Kind : uint8_t { None, Descriptor, Posix, Alarm };

/** What names a timer among those of its kind. */
using Id = uintptr_t;

constexpr Id kAlarm = 0; // there is one

struct Timer {
    Kind kind;
    bool isArmed;
    bool hasGoneOff; // of a descriptor: what can be read is there
    clockid_t clock;
    Id id;
    int64_t dueNs; // on its clock
    uint64_t intervalNs;
    int signal;        // of POSIX, that it sends; 0: something else
    bool isCounted;    // by the board: it went off by a clock that stands
    uint64_t overruns; // of its last signal
};

// They are changed under the board's lock.
constexpr size_t kMostTimers = 128;
Timer timers[kMostTimers];
std::atomic<unsigned> armedTimers;
uint32_t changesSeen; // of the clock, when the kernel's timers were set
bool areDriven;       // by the kernel, whose clock goes on as the board's does

Timer *find(Kind kind, Id id) {
    const auto found = std::find_if(std::begin(timers), std::end(timers), [=](const Timer &timer) {
        return timer.kind == kind && timer.id == id;
    });
    return found != std::end(timers) ? found : nullptr;
}

void countArmed() {
    armedTimers = static_cast<unsigned>(std::count_if(
        std::begin(timers), std::end(timers), [](const Timer &timer) { return timer.isArmed; }));
}

int64_t nowOn(clockid_t clock, const vb::ProgramsClock &now) {
    return vb::isSystemClock(clock) ? now.systemNs() : now.monotonicNs();
}

/** What is left until it is due; 0 when it is. */
uint64_t leftOf(const Timer &timer, const vb::ProgramsClock &now) {
    const int64_t reached = nowOn(timer.clock, now);
    return timer.dueNs > reached ? static_cast<uint64_t>(timer.dueNs - reached) : 0;
}

/** How often one with an interval has become due. */
uint64_t timesDue(const Timer &timer, const vb::ProgramsClock &now) {
    const int64_t late = nowOn(timer.clock, now) - timer.dueNs;
    if (late < 0)
        return 0;
    return timer.intervalNs == 0 ? 1 : static_cast<uint64_t>(late) / timer.intervalNs + 1;
}

/** Goes on behind what it has become due. */
void goOn(Timer &timer, uint64_t times) {
    if (timer.intervalNs == 0)
        timer.isArmed = false;
    else
        timer.dueNs += static_cast<int64_t>(times * timer.intervalNs);
}

template <typename Time>
struct TimerSetting { // itimerspec, itimerval
    Time it_interval;
    Time it_value;
};

template <typename Time>
TimerSetting<Time> settingOf(uint64_t value, uint64_t interval) {
    return {vb::durationOf<Time>(interval), vb::durationOf<Time>(value)};
}

// The kernel's timer behind one; 0 stops it.
int setKernels(const Timer &timer, uint64_t value, uint64_t interval);

bool hasKernelsGoneOff(const Timer &timer);

/** Sets the kernel's timer; one whose descriptor has become another file's is gone. */
void setOrForget(Timer &timer, uint64_t value, uint64_t interval = 0) {
    if (setKernels(timer, value, interval) != 0)
        timer = {};
}

/**
 * Waits until the kernel's timer has gone off that was set to do so at once. Where its clock is
 * coarse that takes milliseconds, in which the thread that the timer is for would seem to rest.
 */
void awaitKernels(const Timer &timer) {
    constexpr int kUsualTries = 20;
    constexpr int kMostTries = 100;
    constexpr timespec kBriefly = {0, 500000};
    for (int tries = 0; tries < kMostTries && !hasKernelsGoneOff(timer); ++tries) {
        if (tries < kUsualTries)
            sched_yield();
        else
            vb::nextPpoll(nullptr, 0, &kBriefly, nullptr);
    }
}

/** The interval at which the kernel's goes off by itself. */
uint64_t kernelsInterval(const Timer &timer, const vb::ProgramsClock &now) {
    return timer.intervalNs != 0 && !now.stands() ? now.hostNs(timer.intervalNs) : 0;
}

/** Lets the kernel's timer go off when this one is due; by a clock that stands it does not. */
void drive(Timer &timer, const vb::ProgramsClock &now) {
    const uint64_t left = leftOf(timer, now);
    const uint64_t host = left == 0 ? 1 : now.hostNs(left);
    timer.isCounted = timer.isCounted && now.stands();
    timer.hasGoneOff = left == 0;
    setOrForget(timer, host == kNever ? 0 : host, kernelsInterval(timer, now));
}

/** The clock has been changed. While the kernel drove it, it has sent the signals that were due. */
void driveAnew(Timer &timer, const vb::ProgramsClock &now) {
    if (areDriven && timer.kind != Kind::Descriptor && leftOf(timer, now) == 0)
        goOn(timer, timesDue(timer, now));
    if (timer.isArmed)
        drive(timer, now);
}

/** Whether the last signal that it has sent waits to be taken. */
bool isPending(const Timer &timer) {
    sigset_t pending;
    return timer.isCounted && timer.signal != 0 && sigpending(&pending) == 0 &&
           sigismember(&pending, timer.signal) == 1;
}

void countOverruns(Timer &timer, uint64_t times) {
    timer.overruns = isPending(timer) ? timer.overruns + times : times - 1;
    timer.isCounted = true;
}

/** Lets go off what is due by a clock that stands, of which the kernel knows nothing. */
void setOff(Timer &timer, const vb::ProgramsClock &now) {
    if (leftOf(timer, now) != 0 || timer.hasGoneOff)
        return;
    if (timer.kind == Kind::Descriptor) {
        timer.hasGoneOff = true;
    } else {
        const uint64_t times = timesDue(timer, now);
        countOverruns(timer, times);
        goOn(timer, times);
    }
    setOrForget(timer, 1);
    awaitKernels(timer);
}

/** Brings all up to date; how long the next one has to go. */
uint64_t serveAll(const vb::ProgramsClock &now, vb::Turn turn) {
    const bool isSteppedOn = now.stands() && !areDriven;
    const uint32_t before = std::exchange(changesSeen, now.clock().changes);
    uint64_t left = kNever;
    for (Timer &timer : timers) {
        if (timer.isArmed && before != changesSeen && !isSteppedOn)
            driveAnew(timer, now);
        if (timer.isArmed && now.stands() && turn == vb::Turn::Own)
            setOff(timer, now);
        if (timer.isArmed && !timer.hasGoneOff)
            left = std::min(left, leftOf(timer, now));
    }
    areDriven = !now.stands();
    countArmed();
    return left;
}

/** A timer's setting, as the C library's structures tell it. */
struct Setting {
    uint64_t valueNs;
    uint64_t intervalNs;
};

template <typename Time>
bool readSetting(const TimerSetting<Time> *address, Setting &setting) {
    TimerSetting<Time> given = {};
    return vb::copyFromUser(&given, address, sizeof(given)) &&
           vb::readDuration(given.it_value, setting.valueNs) &&
           vb::readDuration(given.it_interval, setting.intervalNs);
}

Setting settingNow(const Timer *timer) {
    if (timer == nullptr || !timer->isArmed)
        return {0, timer != nullptr ? timer->intervalNs : 0};
    const auto now = vb::ProgramsClock::underLock();
    const uint64_t left = leftOf(*timer, now);
    const bool isLate = left == 0 && timer->intervalNs != 0;
    return {isLate ? timer->intervalNs : left, timer->intervalNs};
}

template <typename Time>
bool store(const Setting &setting, TimerSetting<Time> *address) {
    const auto told = settingOf<Time>(setting.valueNs, setting.intervalNs);
    return address == nullptr || vb::copyToUser(address, &told, sizeof(told));
}

/** Arms one, or stops it. */
void arm(Timer &timer, const Setting &setting, bool isPoint) {
    const auto now = vb::ProgramsClock::underLock();
    serveAll(now, vb::Turn::Own);
    const int64_t base = isPoint ? 0 : std::max<int64_t>(nowOn(timer.clock, now), 0);
    const auto most = static_cast<uint64_t>(INT64_MAX - base);
    timer.isArmed = setting.valueNs != 0;
    timer.intervalNs = setting.intervalNs;
    timer.dueNs = base + static_cast<int64_t>(std::min(setting.valueNs, most));
    timer.hasGoneOff = false;
    timer.isCounted = false;
    setOrForget(timer, 0);
    if (timer.isArmed && now.stands())
        setOff(timer, now);
    else if (timer.isArmed)
        drive(timer, now);
}

/** A new timer's place; without one it is the kernel's alone. */
void note(Kind kind, Id id, clockid_t clock, int signal = 0) {
    Timer *place = find(kind, id); // of one whose descriptor was closed
    if (place == nullptr)
        place = find(Kind::None, 0);
    if (place != nullptr)
        *place = {kind, false, false, clock, id, 0, 0, signal, false, 0};
}

/** Whether a timer is the board's: it was armed by its clock, or is armed by it now. */
bool isBoards(const Timer *timer, bool isPoint) {
    return timer != nullptr &&
           (timer->isArmed || vb::waitsByBoard() ||
            (isPoint && vb::isSystemClock(timer->clock) && vb::isOffHost(timer->clock)));
}

/**
 * Sets one of the board's timers; what is wrong with that, or what the kernel has to do, the C
 * library's function does.
 */
template <typename Time, typename Next>
int set(Kind kind, Id id, bool isPoint, const TimerSetting<Time> *given, TimerSetting<Time> *before,
        Next next) {
    Setting setting = {};
    if (vb::attachedFolder() == nullptr || !readSetting(given, setting))
        return next();
    {
        const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
        Timer *timer = find(kind, id);
        if (isBoards(timer, isPoint)) {
            const Setting last = settingNow(timer);
            arm(*timer, setting, isPoint);
            countArmed();
            if (timer->kind == Kind::None)
                return next();                  // which tells what is wrong
            vb::wakeAll(*vb::attachedFolder()); // threads that wait have to know of it
            return store(last, before) ? 0 : vb::failWith(EFAULT);
        }
    }
    return next();
}

template <typename Time, typename Next>
int tell(Kind kind, Id id, TimerSetting<Time> *told, Next next) {
    if (vb::attachedFolder() != nullptr) {
        const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
        if (const Timer *timer = find(kind, id); timer != nullptr && timer->isArmed)
            return store(settingNow(timer), told) ? 0 : vb::failWith(EFAULT);
    }
    return next();
}

void forget(Kind kind, Id id) {
    if (vb::attachedFolder() == nullptr)
        return;
    const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
    if (Timer *timer = find(kind, id); timer != nullptr)
        *timer = {};
    countArmed();
}

/** The clocks that timers can have and boards have of their own. */
bool isOfTimers(clockid_t clock) {
    return vb::isSystemClock(clock) || clock == CLOCK_MONOTONIC || clock == CLOCK_BOOTTIME ||
           clock == CLOCK_BOOTTIME_ALARM;
}

int noteNew(int result, Kind kind, Id id, clockid_t clock, int signal = 0) {
    if (result < 0 || !isOfTimers(clock) || vb::attachedFolder() == nullptr)
        return result;
    const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
    note(kind, id, clock, signal);
    return result;
}

Id idOf(timer_t timer) {
    return reinterpret_cast<Id>(timer);
}

template <typename Time, typename Next>
int setAlarm(int which, const TimerSetting<Time> *given, TimerSetting<Time> *before, Next next) {
    if (which != ITIMER_REAL)
        return next();
    if (vb::waitsByBoard()) {
        const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
        if (find(Kind::Alarm, kAlarm) == nullptr)
            note(Kind::Alarm, kAlarm, CLOCK_MONOTONIC);
    }
    return set(Kind::Alarm, kAlarm, false, given, before, next);
}

using AlarmSetting = TimerSetting<timeval>;

/** Sets an alarm; what was left of the one before, or nothing when next has to do it. */
template <typename Next>
auto setAlarm(uint64_t valueNs, uint64_t intervalNs, uint64_t unitNs, Next next) {
    const auto given = settingOf<timeval>(valueNs, intervalNs);
    AlarmSetting before = {};
    bool isKernels = false;
    setAlarm(ITIMER_REAL, &given, &before, [&] {
        isKernels = true;
        return 0;
    });
    uint64_t left = 0;
    vb::readDuration(before.it_value, left);
    const uint64_t units = (left + unitNs / 2) / unitNs; // as near as it gets, but for nothing
    return isKernels ? next() : static_cast<decltype(next())>(units == 0 && left != 0 ? 1 : units);
}

} // namespace

VB_SEAM(int, timerfd_create, int clock, int flags) {
    const int fd = VB_NEXT(timerfd_create)(clock, flags);
    return noteNew(fd, Kind::Descriptor, static_cast<Id>(fd), clock);
}

#define VB_SEAM_TIMERFD(setName, tellName, Time)                                                   \
    VB_SEAM(int, setName, int fd, int flags, const TimerSetting<Time> *given,                      \
            TimerSetting<Time> *before) {                                                          \
        const auto next = [=] { return VB_NEXT(setName)(fd, flags, given, before); };              \
        return (flags & ~TFD_TIMER_ABSTIME) != 0                                                   \
                   ? next()                                                                        \
                   : set(Kind::Descriptor, static_cast<Id>(fd), flags != 0, given, before, next);  \
    }                                                                                              \
    VB_SEAM(int, tellName, int fd, TimerSetting<Time> *told) {                                     \
        return tell(Kind::Descriptor, static_cast<Id>(fd), told,                                   \
                    [=] { return VB_NEXT(tellName)(fd, told); });                                  \
    }
VB_SEAM_TIMERFD(timerfd_settime, timerfd_gettime, timespec)
VB_SEAM_TIMERFD(__timerfd_settime64, __timerfd_gettime64, vb::Timespec64)

VB_SEAM(int, timer_create, clockid_t clock, sigevent *event, timer_t *timer) {
    const int result = VB_NEXT(timer_create)(clock, event, timer);
    const int signal = event == nullptr                      ? SIGALRM
                       : event->sigev_notify == SIGEV_SIGNAL ? event->sigev_signo
                                                             : 0;
    return noteNew(result, Kind::Posix, result == 0 ? idOf(*timer) : 0, clock, signal);
}

VB_SEAM(int, timer_getoverrun, timer_t timer) {
    constexpr uint64_t kMost = INT_MAX;
    if (vb::attachedFolder() != nullptr) {
        const vb::BoardLock lock(*vb::attachedFolder(), vb::BoardLock::Use::Looks);
        const Timer *known = find(Kind::Posix, idOf(timer));
        if (known != nullptr && known->isCounted)
            return static_cast<int>(std::min(known->overruns, kMost));
    }
    return VB_NEXT(timer_getoverrun)(timer);
}

VB_SEAM(int, timer_delete, timer_t timer) {
    forget(Kind::Posix, idOf(timer));
    return VB_NEXT(timer_delete)(timer);
}

#define VB_SEAM_TIMER(setName, tellName, Time)                                                     \
    VB_SEAM(int, setName, timer_t timer, int flags, const TimerSetting<Time> *given,               \
            TimerSetting<Time> *before) {                                                          \
        return set(Kind::Posix, idOf(timer), (flags & TIMER_ABSTIME) != 0, given, before,          \
                   [=] { return VB_NEXT(setName)(timer, flags, given, before); });                 \
    }                                                                                              \
    VB_SEAM(int, tellName, timer_t timer, TimerSetting<Time> *told) {                              \
        return tell(Kind::Posix, idOf(timer), told,                                                \
                    [=] { return VB_NEXT(tellName)(timer, told); });                               \
    }
VB_SEAM_TIMER(timer_settime, timer_gettime, timespec)
VB_SEAM_TIMER(__timer_settime64, __timer_gettime64, vb::Timespec64)

#define VB_SEAM_ITIMER(setName, tellName, Time)                                                    \
    VB_SEAM(int, setName, int which, const TimerSetting<Time> *given,                              \
            TimerSetting<Time> *before) {                                                          \
        return setAlarm(which, given, before,                                                      \
                        [=] { return VB_NEXT(setName)(which, given, before); });                   \
    }                                                                                              \
    VB_SEAM(int, tellName, int which, TimerSetting<Time> *told) {                                  \
        const auto next = [=] { return VB_NEXT(tellName)(which, told); };                          \
        return which == ITIMER_REAL ? tell(Kind::Alarm, kAlarm, told, next) : next();              \
    }
VB_SEAM_ITIMER(setitimer, getitimer, timeval)
VB_SEAM_ITIMER(__setitimer64, __getitimer64, vb::Timeval64)

VB_SEAM(unsigned, alarm, unsigned seconds) {
    return setAlarm(seconds * vb::kNsPerSecond, 0, vb::kNsPerSecond,
                    [=] { return VB_NEXT(alarm)(seconds); });
}

VB_SEAM(useconds_t, ualarm, useconds_t value, useconds_t interval) {
    return setAlarm(value * vb::kNsPerUs, interval * vb::kNsPerUs, vb::kNsPerUs,
                    [=] { return VB_NEXT(ualarm)(value, interval); });
}

namespace {

int setKernels(const Timer &timer, uint64_t value, uint64_t interval) {
    constexpr uint64_t kLeastAlarmNs = 1000;
    const auto setting = settingOf<timespec>(value, interval);
    switch (timer.kind) {
    case Kind::Descriptor:
        return VB_NEXT(timerfd_settime)(static_cast<int>(timer.id), 0, &setting, nullptr);
    case Kind::Posix:
        return VB_NEXT(timer_settime)(reinterpret_cast<timer_t>(timer.id), 0, &setting, nullptr);
    case Kind::Alarm: {
        const auto alarm =
            settingOf<timeval>(value == 0 ? 0 : std::max(value, kLeastAlarmNs), interval);
        return VB_NEXT(setitimer)(ITIMER_REAL, &alarm, nullptr);
    }
    case Kind::None:
        break;
    }
    return 0;
}

bool hasKernelsGoneOff(const Timer &timer) {
    TimerSetting<timespec> left = {};
    TimerSetting<timeval> alarm = {};
    pollfd entry = {static_cast<int>(timer.id), POLLIN, 0};
    switch (timer.kind) {
    case Kind::Descriptor:
        return vb::nextPpoll(&entry, 1, &vb::kNow, nullptr) != 0;
    case Kind::Posix:
        VB_NEXT(timer_gettime)(reinterpret_cast<timer_t>(timer.id), &left);
        return left.it_value.tv_sec == 0 && left.it_value.tv_nsec == 0;
    case Kind::Alarm:
        VB_NEXT(getitimer)(ITIMER_REAL, &alarm);
        return alarm.it_value.tv_sec == 0 && alarm.it_value.tv_usec == 0;
    case Kind::None:
        break;
    }
    return true;
}

/** The armed timer of a descriptor; null when it has none, or is another file's by now. */
Timer *armedTimer(int fd) {
    Timer *timer = find(Kind::Descriptor, static_cast<Id>(fd));
    return timer != nullptr && timer->isArmed && vb::kernel::isTimer(fd) ? timer : nullptr;
}

} // namespace

namespace vb {

uint64_t serveTimers(const ProgramsClock &now, Turn turn) {
    return armedTimers == 0 ? kNever : serveAll(now, turn);
}

void forgetTimersOfParent() {
    for (Timer &timer : timers) {
        if (timer.kind == Kind::Posix || timer.kind == Kind::Alarm)
            timer = {};
    }
    countArmed();
}

bool isTimer(int fd) {
    if (armedTimers == 0)
        return false;
    const BoardLock lock(*attachedFolder(), BoardLock::Use::Looks);
    return armedTimer(fd) != nullptr;
}

bool takeExpirations(int fd, ssize_t size, uint64_t &expirations) {
    if (size != sizeof(expirations) || armedTimers == 0)
        return false;
    const BoardLock lock(*attachedFolder(), BoardLock::Use::Looks);
    Timer *timer = armedTimer(fd);
    if (timer == nullptr)
        return false;
    const auto now = ProgramsClock::underLock();
    expirations = std::max<uint64_t>(timesDue(*timer, now), 1);
    goOn(*timer, expirations);
    timer->hasGoneOff = false;
    if (timer->isArmed)
        drive(*timer, now);
    countArmed();
    return true;
}

} // namespace vb
