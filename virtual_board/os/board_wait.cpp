#include "virtual_board/os/board_wait.h"

#include "virtual_board/board/lock.h"
#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timers.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace vb {

namespace {

constexpr uint64_t kNever = UINT64_MAX;
constexpr uint64_t kLongNs = 1000 * kNsPerSecond;

// Who cannot be called, as it waits for a lock, looks at the clock now and then. While somebody
// steps it, the one that is due next looks often, and who comes later the more seldom: a crowd that
// looks all the time would keep the processors from those whose turn it is.
constexpr uint64_t kLookNs = 20000000;
constexpr uint64_t kSteppingLookNs = 2000000; // of who waits for no moment, or is one too many
constexpr uint64_t kFirstLookNs = 100000;
constexpr uint64_t kSeldomer = 4;

// Nobody calls when the board is removed.
constexpr uint64_t kBoardLookNs = kNsPerSecond;

const BoardFolder &folder() {
    return *attachedFolder();
}

Waiters &waiters() {
    return folder().board()->waiters;
}

uint64_t lookNs(const Waiter *waiter) {
    const int32_t stepper = std::atomic_ref(waiters().stepper).load();
    if (stepper == 0 || !kernel::isProcess(stepper))
        return kLookNs;
    if (waiter == nullptr)
        return kSteppingLookNs;
    uint64_t interval = kFirstLookNs;
    for (uint32_t i = waitersBefore(waiters(), *waiter); i != 0 && interval < kLookNs; i--)
        interval *= kSeldomer;
    return std::min(interval, kLookNs);
}

} // namespace

BoardWait::BoardWait(WaitKind kind, const Deadline &deadline)
    : kind_(kind), deadline_(deadline),
      nextLookNs_(kernel::clockNow(CLOCK_MONOTONIC) + kBoardLookNs) {
    if (kind_ == WaitKind::Lock)
        return;
    // One that came between a look at the clock and a poll would not end that.
    blockSignals(signals_);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
    holdsSignals_ = true;
}

void BoardWait::end() {
    leave();
    closeWake();
    if (!std::exchange(holdsSignals_, false))
        return;
    pthread_sigmask(SIG_SETMASK, &signals_, nullptr);
    pthread_setcancelstate(cancelState_, nullptr);
}

void BoardWait::endCancelled(void *wait) {
    auto *cancelled = static_cast<BoardWait *>(wait);
    cancelled->end();
    for (Scratch *memory : cancelled->lent_) {
        if (memory != nullptr)
            memory->giveBack();
    }
}

void BoardWait::leave() {
    if (waiter_ == nullptr)
        return;
    const bool looksAfterTimers = waiter_->due == DueKind::Timer;
    endWait(*waiter_);
    waiter_ = nullptr;
    if (looksAfterTimers)
        wakeAll(folder()); // another thread does from now on
}

/** The program may have closed all that it has, and this number may be another file's. */
void BoardWait::closeWake() {
    if (wakeDescriptor_ >= 0 && kernel::identityOf(wakeDescriptor_) == wakeFile_)
        kernel::close(wakeDescriptor_);
    wakeDescriptor_ = -1;
}

/** Whoever calls from now on ends the next poll. */
void BoardWait::listen() {
    closeWake();
    const int fd = folder().openOwnFile(kWakeFile, O_RDONLY | O_NONBLOCK);
    wakeDescriptor_ = fd >= 0 ? kernel::moveUp(fd) : fd;
    wakeFile_ = kernel::identityOf(wakeDescriptor_);
}

void BoardWait::lookForBoard(bool isLocked) {
    const uint64_t now = kernel::clockNow(CLOCK_MONOTONIC);
    if (isLocked && now < nextLookNs_)
        return;
    nextLookNs_ = now + kBoardLookNs;
    if (!goesByHost() && folder().isGone())
        goByHost();
}

bool BoardWait::goesOn() {
    const int savedErrno = errno;
    bool goes = false;
    {
        // Nobody steps the clock and calls while it is looked at.
        const BoardLock lock(folder(), BoardLock::Use::Looks);
        lookForBoard(lock.isHeld());
        if (kind_ != WaitKind::Lock)
            listen();
        const auto now = ProgramsClock::underLock();
        const bool isTurn =
            waiter_ != nullptr ? isCalled(*waiter_) : !std::exchange(hasLooked_, true);
        timers_ = serveTimers(now, isTurn ? Turn::Own : Turn::Others);
        left_ = deadline_.left(now);
        goes = now.stands() ? goesOnUntilCalled(now) : goesOnByItself();
        const uint64_t hostNs = left_ == kNever ? kNever : now.hostNs(left_);
        hostNs_ = canBeCalled(now) ? hostNs : std::min(hostNs, lookNs(waiter_));
        if (std::min(left_, timers_) != kNever && !goesByHost())
            hostNs_ = std::min(hostNs_, kBoardLookNs);
    }
    errno = savedErrno;
    return goes;
}

bool BoardWait::goesOnByItself() {
    leave();
    return left_ != 0;
}

bool BoardWait::canBeCalled(const ProgramsClock &now) const {
    if (goesByHost())
        return true; // nobody does any more
    const bool isKnown = waiter_ != nullptr || std::min(left_, timers_) == kNever || !now.stands();
    return isKnown && wakeDescriptor_ >= 0;
}

/** By a clock that is stepped threads go on in turn, as they are called. */
bool BoardWait::goesOnUntilCalled(const ProgramsClock &now) {
    // One thread looks after the timers of its process.
    if (waiter_ != nullptr)
        waiter_->due = DueKind::Timeout;
    if (timers_ != kNever && hasTimerWait(waiters(), getpid()))
        timers_ = kNever;
    const uint64_t soonest = std::min(left_, timers_);
    if (soonest == kNever) {
        leave();
        return true;
    }
    if (left_ == 0 && (waiter_ == nullptr || isCalled(*waiter_)))
        return false;
    if (waiter_ == nullptr)
        waiter_ = beginWait(waiters(), getpid(), kernel::threadId(), kind_);
    if (waiter_ == nullptr)
        return true;
    waiter_->dueNs = now.boardNs() + soonest;
    waiter_->due = timers_ < left_ ? DueKind::Timer : DueKind::Timeout;
    std::atomic_ref(waiter_->state).store(WaiterState::Waiting);
    return true;
}

int BoardWait::poll(pollfd *descriptors, nfds_t count, const sigset_t *signals) {
    descriptors[count] = {wakeDescriptor_, 0, 0};
    const auto timeout = durationOf<timespec>(std::min(hostNs_, kLongNs));
    int ready = 0;
    pthread_cleanup_push(endCancelled, this);
    pthread_setcancelstate(cancelState_, nullptr);
    ready = nextPpoll(descriptors, count + 1, &timeout, signals != nullptr ? signals : &signals_);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    pthread_cleanup_pop(0);
    return ready > 0 && descriptors[count].revents != 0 ? ready - 1 : ready;
}

uint64_t sleepByBoard(const Deadline &deadline) {
    BoardWait wait(WaitKind::Sleep, deadline);
    pollfd none[1];
    while (wait.goesOn()) {
        if (wait.poll(none, 0, nullptr) < 0)
            return wait.goesOn() ? wait.leftNs() : 0;
    }
    wait.end();
    pthread_testcancel();
    return 0;
}

} // namespace vb
