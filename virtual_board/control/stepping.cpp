#include "virtual_board/control/stepping.h"

#include "virtual_board/board/clock_change.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/users.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <unistd.h>

namespace vboard {

namespace {

constexpr uint64_t kNoWait = UINT64_MAX;
constexpr int kStillLooks = 200; // at rest, some of which are a millisecond apart

vb::Waiters &waitersOf(const vb::BoardFolder &folder) {
    return folder.board()->waiters;
}

/** The processes that have started on the board, or wait on it. */
std::vector<int32_t> processesOn(vb::Waiters &waiters) {
    std::vector<int32_t> processes;
    const auto add = [&](int32_t pid) {
        if (pid != 0 && std::find(processes.begin(), processes.end(), pid) == processes.end())
            processes.push_back(pid);
    };
    for (int32_t &program : waiters.program)
        add(std::atomic_ref(program).load());
    for (vb::Waiter &waiter : waiters.waiter) {
        if (stateOf(waiter) != vb::WaiterState::Free)
            add(waiter.pid);
    }
    return processes;
}

vb::Waiter *waiterOf(vb::Waiters &waiters, int32_t thread) {
    const auto found =
        std::find_if(std::begin(waiters.waiter), std::end(waiters.waiter), [&](vb::Waiter &waiter) {
            return stateOf(waiter) != vb::WaiterState::Free && waiter.thread == thread;
        });
    return found != std::end(waiters.waiter) ? found : nullptr;
}

/** Forgets those who were killed while they waited. */
void forgetDead(vb::Waiters &waiters, const std::vector<Thread> &threads) {
    for (vb::Waiter &waiter : waiters.waiter) {
        const auto isIt = [&](const Thread &thread) { return thread.id == waiter.thread; };
        if (stateOf(waiter) != vb::WaiterState::Free &&
            std::none_of(threads.begin(), threads.end(), isIt))
            endWait(waiter);
    }
}

uint64_t timeOf(const vb::BoardFolder &folder) {
    const LockedBoard board(folder);
    return board->clock.anchorNs;
}

/** Lets the host's time pass a little, and more with each try. */
void pauseBriefly(int tries) {
    constexpr int kSpins = 20;
    constexpr uint64_t kLeastNs = 20000;
    constexpr uint64_t kMostNs = 1000000;
    if (tries < kSpins) {
        sched_yield();
        return;
    }
    const uint32_t word = 0;
    vb::kernel::waitForChange(&word, 0, std::min(kMostNs, kLeastNs * uint64_t(tries - kSpins + 1)));
}

} // namespace

Stepper::Stepper(const vb::BoardFolder &folder, uint64_t patienceNs)
    : folder_(folder), patienceNs_(patienceNs),
      turn_(folder.openOwnFile(vb::kStateFile, O_RDONLY)) {
    while (turn_.isOpen() && flock(turn_.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    std::atomic_ref(waitersOf(folder_).stepper).store(getpid());
}

Stepper::~Stepper() {
    std::atomic_ref(waitersOf(folder_).stepper).store(0);
}

Stepper::Look Stepper::look() const {
    vb::Waiters &waiters = waitersOf(folder_);
    Look look = {threadsOf(processesOn(waiters)), {}, true};
    std::erase_if(look.threads, [](const Thread &thread) {
        return thread.id == vb::kernel::threadId() || thread.state == 'Z' || thread.state == 'X';
    });
    for (Thread &thread : look.threads) {
        vb::Waiter *waiter = waiterOf(waiters, thread.id);
        const bool isWaiting = waiter != nullptr && stateOf(*waiter) == vb::WaiterState::Waiting;
        const bool isCalled = waiter != nullptr && !isWaiting;
        look.isQuiet = look.isQuiet && thread.state == 'S' && !isCalled;
        look.waits.push_back(isWaiting ? waiter->number : kNoWait);
        if (isWaiting)
            thread.runs = 0; // it may look at the clock now and then
    }
    return look;
}

void Stepper::settle() const {
    uint64_t began = vb::kernel::clockNow(CLOCK_MONOTONIC);
    Look before = look();
    int still = 0;
    for (int tries = 0;; ++tries) {
        Look now = look();
        // Threads that were at rest both times, and have not run in between, were so at once.
        if (now.isQuiet && now == before) {
            forgetDead(waitersOf(folder_), now.threads);
            return;
        }
        if (now == before && ++still > kStillLooks)
            forgetLeftBehind(now);
        if (now != before)
            still = 0;
        if (vb::kernel::clockNow(CLOCK_MONOTONIC) - began > patienceNs_) {
            if (!forgetStrangers())
                failBusy(now);
            began = vb::kernel::clockNow(CLOCK_MONOTONIC);
        }
        before = std::move(now);
        pauseBriefly(tries);
    }
}

/**
 * A thread that sleeps on although it has been called has left its wait by a jump out of a signal's
 * handler.
 */
void Stepper::forgetLeftBehind(const Look &look) const {
    vb::Waiters &waiters = waitersOf(folder_);
    for (const Thread &thread : look.threads) {
        vb::Waiter *waiter = waiterOf(waiters, thread.id);
        if (thread.state == 'S' && waiter != nullptr && isCalled(*waiter) &&
            waiter->kind != vb::WaitKind::Lock)
            endWait(*waiter);
    }
}

/** The number of a program that has ended may be another process's; whether there was one. */
bool Stepper::forgetStrangers() const {
    const std::vector<User> users = usersOf(folder_.path());
    bool isFound = false;
    for (int32_t &program : waitersOf(folder_).program) {
        const bool isUser = std::any_of(users.begin(), users.end(),
                                        [&](const User &user) { return user.pid == program; });
        if (program == 0 || program == getpid() || isUser)
            continue;
        isFound = isFound || vb::kernel::isProcess(program);
        std::atomic_ref(program).store(0);
    }
    return isFound;
}

void Stepper::failBusy(const Look &look) const {
    vb::Waiters &waiters = waitersOf(folder_);
    for (const Thread &thread : look.threads) {
        vb::Waiter *waiter = waiterOf(waiters, thread.id);
        if (thread.state == 'S' && (waiter == nullptr || !isCalled(*waiter)))
            continue;
        const std::string name = thread.id == thread.pid
                                     ? "process " + std::to_string(thread.pid)
                                     : "thread " + std::to_string(thread.id) + " of process " +
                                           std::to_string(thread.pid);
        const bool isStopped = thread.state == 'T' || thread.state == 't';
        throw Failure(VBOARD_E_BUSY, programOf(thread.pid) + " (" + name + ") " +
                                         (isStopped ? "is stopped" : "does not wait") +
                                         "; the clock stands until it does");
    }
    throw Failure(VBOARD_E_BUSY, "the board's programs do not come to rest");
}

void Stepper::step(uint64_t ns, int32_t pid, language::StepEnds ends) const {
    vb::Board &board = *folder_.board();
    {
        const vb::ClockChange clock(folder_, vb::ClockChange::Wakes::Nobody);
        const uint64_t now = clock->anchorNs;
        moveClock(*clock, ns - std::min(ns, now));
    }
    vb::traceNext(board.trace, vb::TraceKind::Step, {pid, board.clock.anchorNs}).value =
        static_cast<uint32_t>(ends);
}

/** Moves the clock to the next deadline, and calls who waits for it. */
bool Stepper::callNext(uint64_t until) const {
    const LockedBoard board(folder_);
    if (board->clock.pace.mode != vb::TimeMode::Stepped)
        throw Failure(VBOARD_E_REFUSED, "the board's time is not stepped any more");
    vb::Waiter *waiter = firstDue(board->waiters);
    if (waiter == nullptr || waiter->dueNs > until) {
        step(until, getpid(), language::StepEnds::Nothing);
        board.bringUpToDate();
        return false;
    }
    const bool isTimer = waiter->due == vb::DueKind::Timer;
    step(waiter->dueNs, waiter->pid,
         isTimer ? language::StepEnds::Timer
                 : static_cast<language::StepEnds>(static_cast<uint32_t>(waiter->kind) + 1));
    board.bringUpToDate();
    wake(folder_, *waiter);
    return true;
}

void Stepper::advanceBy(uint64_t ns) {
    advanceTo(timeOf(folder_) + ns);
}

void Stepper::advanceTo(uint64_t ns) {
    settle();
    while (callNext(ns))
        settle();
}

} // namespace vboard
