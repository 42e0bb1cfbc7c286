// Waits for descriptors whose time-out is in the programs' time. Whether something is ready is
// asked with the function itself, without a time-out; what is blocked in is a poll for the same
// descriptors and the board's clock.

#include "virtual_board/os/descriptor_waits.h"

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/scratch.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timers.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/signalfd.h>
#include <sys/socket.h>

namespace {

using vb::Deadline;

constexpr uint64_t kNsPerMs = 1000000;

/** What a poll is made for: entries with one more place behind them. */
class Entries {
  public:
    Entries(const Entries &) = delete;
    Entries &operator=(const Entries &) = delete;

    /** Memory for some; null where there is none. */
    explicit Entries(nfds_t count)
        : all_(count < kFew  ? few_
               : fits(count) ? static_cast<pollfd *>(scratch_.take())
                             : nullptr) {}

    pollfd *all() const { return all_; }
    vb::Scratch &memory() { return scratch_; }

  private:
    static constexpr nfds_t kFew = 8;
    static bool fits(nfds_t count) { return count < vb::Scratch::kSize / sizeof(pollfd); }

    pollfd few_[kFew];
    vb::Scratch scratch_;
    pollfd *all_;
};

/** Something that was ready has gone to somebody else, or is nothing that is asked for. */
void pauseShortly() {
    constexpr timespec kMillisecond = {0, kNsPerMs};
    vb::nextPpoll(nullptr, 0, &kMillisecond, nullptr);
}

/**
 * Waits for what a function tells that does not wait: how much is ready. fill writes the entries
 * that are polled, and tells how many they are.
 */
template <typename Ask, typename Fill>
int waitFor(const Deadline &deadline, nfds_t most, const sigset_t *signals, Ask ask, Fill fill,
            vb::Scratch *askers = nullptr) {
    int ready = ask();
    if (ready != 0)
        return ready;
    Entries entries(most);
    vb::BoardWait wait(vb::WaitKind::Descriptors, deadline);
    wait.lends(entries.memory());
    if (askers != nullptr)
        wait.lends(*askers);
    while (ready == 0 && wait.goesOn()) {
        int found = -1;
        errno = EINVAL;
        if (entries.all() != nullptr)
            found = wait.poll(entries.all(), fill(entries.all()), signals);
        if (found < 0 && errno == EINTR)
            return -1;
        // With more of them than there is memory for, or may be: it is asked again and again.
        ready = found != 0 ? ask() : 0;
        if (found != 0 && ready == 0)
            pauseShortly();
    }
    return ready != 0 ? ready : ask();
}

Deadline inMilliseconds(int timeout) {
    return timeout < 0 ? Deadline::never()
                       : Deadline::in(static_cast<uint64_t>(timeout) * kNsPerMs);
}

/** select takes more than a second of microseconds. */
template <typename Time>
void carrySeconds(Time &time) {
    constexpr int kUsPerSecond = 1000000;
    if (time.tv_usec < kUsPerSecond)
        return;
    time.tv_sec += static_cast<decltype(time.tv_sec)>(time.tv_usec / kUsPerSecond);
    time.tv_usec %= kUsPerSecond;
}

/** The deadline that a time-out sets; false for one that the C library refuses or that is over. */
template <typename Time>
bool readTimeout(const Time *timeout, Deadline &deadline) {
    if (timeout == nullptr)
        return true;
    Time time = {};
    uint64_t ns = 0;
    if (!vb::copyFromUser(&time, timeout, sizeof(time)))
        return false;
    if constexpr (!vb::HasNanoseconds<Time>)
        carrySeconds(time);
    if (!vb::readDuration(time, ns) || ns == 0)
        return false;
    deadline = Deadline::in(ns);
    return true;
}

// poll

int pollByBoard(pollfd *descriptors, nfds_t count, const Deadline &deadline,
                const sigset_t *signals) {
    return waitFor(
        deadline, count + 1, signals,
        [=] { return vb::nextPpoll(descriptors, count, &vb::kNow, signals); },
        [=](pollfd *entries) {
            std::copy(descriptors, descriptors + count, entries);
            return count;
        });
}

template <typename Time, typename Next>
int pollByBoard(pollfd *descriptors, nfds_t count, const Time *timeout, const sigset_t *signals,
                Next next) {
    Deadline deadline = Deadline::never();
    return vb::waitsByBoard() && readTimeout(timeout, deadline)
               ? pollByBoard(descriptors, count, deadline, signals)
               : next();
}

// select

/** The sets of a select, which it overwrites with what is ready. */
struct Sets {
    static constexpr size_t kWordBits = 8 * sizeof(fd_mask);
    fd_set *set[3];

    static size_t wordsOf(int count) {
        return (static_cast<size_t>(std::max(count, 0)) + kWordBits - 1) / kWordBits;
    }
};

constexpr short kSelectEvents[] = {POLLIN | POLLRDNORM | POLLRDBAND,
                                   POLLOUT | POLLWRNORM | POLLWRBAND, POLLPRI};

/** Keeps what a program has asked for, while the sets have what is ready. */
class Wanted {
  public:
    Wanted(const Sets &sets, int count) : sets_(sets), words_(Sets::wordsOf(count)) {
        if (3 * words_ * sizeof(fd_mask) <= vb::Scratch::kSize)
            memory_ = static_cast<fd_mask *>(scratch_.take());
        isKept_ = memory_ != nullptr;
        each([this](fd_mask *set, fd_mask *kept, size_t size) {
            isKept_ = isKept_ && vb::copyFromUser(kept, set, size);
        });
    }
    /** Not where there is no memory, or the sets are not in any. */
    bool isKept() const { return isKept_; }
    vb::Scratch &memory() { return scratch_; }
    void restore() const {
        each([](fd_mask *set, fd_mask *kept, size_t size) { std::memcpy(set, kept, size); });
    }

    nfds_t fill(pollfd *entries, int count) const {
        nfds_t filled = 0;
        for (int fd = 0; fd < count; ++fd) {
            short events = 0;
            for (size_t i = 0; i < 3; ++i)
                events = static_cast<short>(events | (has(i, fd) ? kSelectEvents[i] : 0));
            if (events != 0)
                entries[filled++] = {fd, events, 0};
        }
        return filled;
    }

  private:
    template <typename Copy>
    void each(Copy copy) const {
        for (size_t i = 0; memory_ != nullptr && i < 3; ++i) {
            if (sets_.set[i] != nullptr)
                copy(reinterpret_cast<fd_mask *>(sets_.set[i]), memory_ + i * words_,
                     words_ * sizeof(fd_mask));
        }
    }
    bool has(size_t set, int fd) const {
        const auto place = static_cast<size_t>(fd);
        const auto word =
            static_cast<unsigned long>(memory_[set * words_ + place / Sets::kWordBits]);
        return sets_.set[set] != nullptr && (word >> place % Sets::kWordBits & 1) != 0;
    }

    const Sets sets_;
    const size_t words_;
    vb::Scratch scratch_;
    fd_mask *memory_ = nullptr;
    bool isKept_ = false;
};

/** As select; ask is one without a time-out. False where the C library shall tell what is wrong. */
template <typename Ask>
bool selectByBoard(int count, const Sets &sets, const Deadline &deadline, const sigset_t *signals,
                   int &ready, Ask ask) {
    pthread_testcancel(); // before there is memory
    Wanted wanted(sets, count);
    if (!wanted.isKept())
        return false;
    ready = waitFor(
        deadline, static_cast<nfds_t>(std::max(count, 0)) + 1, signals,
        [&] {
            wanted.restore();
            return ask();
        },
        [&](pollfd *entries) { return wanted.fill(entries, count); }, &wanted.memory());
    return true;
}

/** select, which tells what is left of its time-out. */
template <typename Time, typename Select>
int selectWith(int count, const Sets &sets, Time *timeout, Select select) {
    Deadline deadline = Deadline::never();
    int ready = 0;
    if (!vb::waitsByBoard() || !readTimeout(timeout, deadline) ||
        !selectByBoard(count, sets, deadline, nullptr, ready, [&] {
            Time now = {};
            return select(&now);
        }))
        return select(timeout);
    if (timeout != nullptr)
        *timeout = vb::durationOf<Time>(ready == 0 ? 0 : deadline.left(vb::ProgramsClock()));
    return ready;
}

template <typename Time, typename Select>
int pselectWith(int count, const Sets &sets, const Time *timeout, const sigset_t *signals,
                Select select) {
    Deadline deadline = Deadline::never();
    int ready = 0;
    const Time now = {};
    return vb::waitsByBoard() && readTimeout(timeout, deadline) &&
                   selectByBoard(count, sets, deadline, signals, ready,
                                 [&] { return select(&now); })
               ? ready
               : select(timeout);
}

// epoll

/** A wait for what an epoll watches; ask is one without a time-out. */
template <typename Ask>
int epollByBoard(int epoll, const Deadline &deadline, const sigset_t *signals, Ask ask) {
    return waitFor(deadline, 2, signals, ask, [=](pollfd *entries) {
        entries[0] = {epoll, POLLIN, 0};
        return nfds_t{1};
    });
}

template <typename Time, typename Wait>
int epollWith(int epoll, const Time *timeout, const sigset_t *signals, Wait wait) {
    Deadline deadline = Deadline::never();
    const Time now = {};
    return vb::waitsByBoard() && readTimeout(timeout, deadline)
               ? epollByBoard(epoll, deadline, signals, [&] { return wait(&now); })
               : wait(timeout);
}

/** Whether a transfer on a descriptor has a time-out, as those of sockets can. */
bool hasTimeout(int fd, vb::Transfer transfer, Deadline &deadline) {
    const int savedErrno = errno;
    timeval timeout = {};
    socklen_t size = sizeof(timeout);
    const bool isSocket =
        getsockopt(fd, SOL_SOCKET, transfer == vb::Transfer::In ? SO_RCVTIMEO : SO_SNDTIMEO,
                   &timeout, &size) == 0;
    uint64_t ns = 0;
    const bool isTimed = isSocket && vb::readDuration(timeout, ns) && ns != 0;
    if (isTimed)
        deadline = Deadline::in(ns);
    errno = savedErrno;
    return isTimed;
}

/** Whether the handlers of all signals that wait let the kernel's calls go on behind them. */
bool areRestarted(const sigset_t &signals) {
    sigset_t pending;
    sigpending(&pending);
    for (int signal = 1; signal < _NSIG; ++signal) {
        struct sigaction action = {};
        const bool isThere = sigismember(&pending, signal) == 1 &&
                             sigismember(&signals, signal) == 1 &&
                             sigaction(signal, nullptr, &action) == 0;
        if (isThere && action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN &&
            (action.sa_flags & SA_RESTART) == 0)
            return false;
    }
    return true;
}

/** A thread's signals, which are seen before they are handled. */
class WatchedSignals {
  public:
    WatchedSignals() {
        vb::blockSignals(before_);
        pthread_sigmask(SIG_BLOCK, nullptr, &held_);
        sigfillset(&watched_);
        for (int signal = 1; signal < _NSIG; ++signal) {
            if (sigismember(&before_, signal) == 1)
                sigdelset(&watched_, signal);
        }
        const int fd = signalfd(-1, &watched_, SFD_CLOEXEC | SFD_NONBLOCK);
        descriptor_ = fd >= 0 ? vb::kernel::moveUp(fd) : fd;
    }
    WatchedSignals(const WatchedSignals &) = delete;
    WatchedSignals &operator=(const WatchedSignals &) = delete;

    int descriptor() const { return descriptor_; }
    /** Lets their handlers run; whether what they interrupt goes on then. */
    bool handle() const {
        const bool goesOn = areRestarted(watched_);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        pthread_sigmask(SIG_SETMASK, &held_, nullptr);
        return goesOn;
    }
    void end() const {
        const int savedErrno = errno;
        vb::kernel::close(descriptor_);
        errno = savedErrno;
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    static void endOf(void *signals) { static_cast<WatchedSignals *>(signals)->end(); }

  private:
    sigset_t before_, held_, watched_;
    int descriptor_;
};

/** Waits for a timer as reads of it do, which poll does not: handlers can let it go on. */
int waitForTimer(int fd) {
    int ready = 0;
    WatchedSignals signals;
    if (signals.descriptor() < 0) { // no more can be open
        signals.end();
        return vb::waitForDescriptor(fd, POLLIN, Deadline::never());
    }
    pthread_cleanup_push(WatchedSignals::endOf, &signals);
    for (bool goesOn = true; goesOn;) {
        pollfd entries[] = {{fd, POLLIN, 0}, {signals.descriptor(), POLLIN, 0}};
        ready = pollByBoard(entries, 2, Deadline::never(), nullptr);
        goesOn = ready > 0 && entries[0].revents == 0;
        if (goesOn && !signals.handle()) {
            ready = vb::failWith(EINTR);
            goesOn = false;
        }
    }
    pthread_cleanup_pop(1);
    return ready;
}

} // namespace

VB_SEAM(int, poll, pollfd *descriptors, nfds_t count, int timeout) {
    return timeout != 0 && vb::waitsByBoard()
               ? pollByBoard(descriptors, count, inMilliseconds(timeout), nullptr)
               : VB_NEXT(poll)(descriptors, count, timeout);
}

VB_SEAM(int, __poll_chk, pollfd *descriptors, nfds_t count, int timeout, size_t room) {
    return timeout != 0 && vb::waitsByBoard() && count <= room / sizeof(pollfd)
               ? pollByBoard(descriptors, count, inMilliseconds(timeout), nullptr)
               : VB_NEXT(__poll_chk)(descriptors, count, timeout, room);
}

#define VB_SEAM_PPOLL(symbol, Time)                                                                \
    VB_SEAM(int, symbol, pollfd *descriptors, nfds_t count, const Time *timeout,                   \
            const sigset_t *signals) {                                                             \
        return pollByBoard(descriptors, count, timeout, signals,                                   \
                           [=] { return VB_NEXT(symbol)(descriptors, count, timeout, signals); }); \
    }
VB_SEAM_PPOLL(ppoll, timespec)
VB_SEAM_PPOLL(__ppoll64, vb::Timespec64)

#define VB_SEAM_PPOLL_CHK(symbol, Time)                                                            \
    VB_SEAM(int, symbol, pollfd *descriptors, nfds_t count, const Time *timeout,                   \
            const sigset_t *signals, size_t room) {                                                \
        const auto next = [=] {                                                                    \
            return VB_NEXT(symbol)(descriptors, count, timeout, signals, room);                    \
        };                                                                                         \
        return count <= room / sizeof(pollfd)                                                      \
                   ? pollByBoard(descriptors, count, timeout, signals, next)                       \
                   : next();                                                                       \
    }
VB_SEAM_PPOLL_CHK(__ppoll_chk, timespec)
VB_SEAM_PPOLL_CHK(__ppoll64_chk, vb::Timespec64)

#define VB_SEAM_SELECT(symbol, Time)                                                               \
    VB_SEAM(int, symbol, int count, fd_set *in, fd_set *out, fd_set *except,                       \
            vb::PointerTo<Time> timeout) {                                                         \
        return selectWith(count, {{in, out, except}}, timeout, [=](vb::PointerTo<Time> time) {     \
            return VB_NEXT(symbol)(count, in, out, except, time);                                  \
        });                                                                                        \
    }
VB_SEAM_SELECT(select, timeval)
VB_SEAM_SELECT(__select64, vb::Timeval64)

#define VB_SEAM_PSELECT(symbol, Time)                                                              \
    VB_SEAM(int, symbol, int count, fd_set *in, fd_set *out, fd_set *except, const Time *timeout,  \
            const sigset_t *signals) {                                                             \
        return pselectWith(count, {{in, out, except}}, timeout, signals, [=](const Time *time) {   \
            return VB_NEXT(symbol)(count, in, out, except, time, signals);                         \
        });                                                                                        \
    }
VB_SEAM_PSELECT(pselect, timespec)
VB_SEAM_PSELECT(__pselect64, vb::Timespec64)

VB_SEAM(int, epoll_pwait, int epoll, epoll_event *events, int most, int timeout,
        const sigset_t *signals) {
    const auto wait = [=](int time) {
        return VB_NEXT(epoll_pwait)(epoll, events, most, time, signals);
    };
    return timeout != 0 && vb::waitsByBoard()
               ? epollByBoard(epoll, inMilliseconds(timeout), signals, [=] { return wait(0); })
               : wait(timeout);
}

VB_SEAM(int, epoll_wait, int epoll, epoll_event *events, int most, int timeout) {
    const auto wait = [=](int time) { return VB_NEXT(epoll_wait)(epoll, events, most, time); };
    return timeout != 0 && vb::waitsByBoard()
               ? epollByBoard(epoll, inMilliseconds(timeout), nullptr, [=] { return wait(0); })
               : wait(timeout);
}

#define VB_SEAM_EPOLL_PWAIT2(symbol, Time)                                                         \
    VB_SEAM(int, symbol, int epoll, epoll_event *events, int most, const Time *timeout,            \
            const sigset_t *signals) {                                                             \
        return epollWith(epoll, timeout, signals, [=](const Time *time) {                          \
            return VB_NEXT(symbol)(epoll, events, most, time, signals);                            \
        });                                                                                        \
    }
VB_SEAM_EPOLL_PWAIT2(epoll_pwait2, timespec)
VB_SEAM_EPOLL_PWAIT2(__epoll_pwait2_time64, vb::Timespec64)

namespace vb {

int nextPpoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *signals) {
    return VB_NEXT(ppoll)(descriptors, count, timeout, signals);
}

int waitForDescriptor(int fd, short events, const Deadline &deadline, const sigset_t *signals) {
    pollfd entry = {fd, events, 0};
    return pollByBoard(&entry, 1, deadline, signals);
}

int waitForHandler(const sigset_t *signals) {
    return pollByBoard(nullptr, 0, Deadline::never(), signals);
}

bool awaitTransfer(int fd, Transfer transfer) {
    if (!waitsByBoard() || !kernel::blocks(fd))
        return true;
    Deadline deadline = Deadline::never();
    const bool isTimed = hasTimeout(fd, transfer, deadline);
    if (!isTimed)
        return !isTimer(fd) || waitForTimer(fd) > 0;
    const int ready = waitForDescriptor(fd, transfer == Transfer::In ? POLLIN : POLLOUT, deadline);
    if (ready == 0)
        errno = EAGAIN;
    return ready > 0;
}

bool awaitRead(int fd, size_t length) {
    const bool isRefused = length < sizeof(uint64_t) && isTimer(fd);
    return isRefused || awaitTransfer(fd, Transfer::In);
}

bool awaitMessage(int socket, int flags, Transfer transfer) {
    return (flags & MSG_DONTWAIT) != 0 || awaitTransfer(socket, transfer);
}

} // namespace vb
