#pragma once
// Waits of programs whose clocks have a pace of their own.

#include "virtual_board/board/waiters.h"
#include "virtual_board/os/programs_clock.h"
#include "virtual_board/os/scratch.h"

#include <csignal>
#include <poll.h>

namespace vb {

/**
 * The wait of a thread for the programs' time and for something else. The time is looked at again
 * whenever the clock is changed: somebody calls then.
 *
 *     BoardWait wait(kind, deadline);
 *     while (wait.goesOn())
 *         ... block until what is waited for is there, or the wait has to go on
 */
class BoardWait {
  public:
    BoardWait(WaitKind kind, const Deadline &deadline);
    BoardWait(const BoardWait &) = delete;
    BoardWait &operator=(const BoardWait &) = delete;
    ~BoardWait() { end(); }

    /** Looks at the clock; false when the time is over. */
    bool goesOn();
    /** What was left of it then, in the programs' time. */
    uint64_t leftNs() const { return left_; }
    /** How long the host may be waited for until the clock has to be looked at again. */
    uint64_t hostNs() const { return hostNs_; }

    /**
     * Blocks until one of some descriptors is ready. Behind them is a place for one more. As ppoll,
     * with 0 when the clock has to be looked at. A point of cancellation.
     */
    int poll(pollfd *descriptors, nfds_t count, const sigset_t *signals);

    /** Gives memory back, too, when its thread is cancelled. */
    void lends(Scratch &memory) { lent_[lent_[0] != nullptr ? 1 : 0] = &memory; }

    void end();

  private:
    static void endCancelled(void *wait);
    bool goesOnByItself();
    bool goesOnUntilCalled(const ProgramsClock &now);
    bool canBeCalled(const ProgramsClock &now) const;
    void leave();
    void listen();
    void closeWake();
    void lookForBoard(bool isLocked);

    const WaitKind kind_;
    const Deadline deadline_;
    uint64_t left_ = 0;
    uint64_t timers_ = 0; // until the next of this process is due
    uint64_t hostNs_ = 0;
    uint64_t nextLookNs_;      // for the board, on the host's clock
    Waiter *waiter_ = nullptr; // while the clock is stepped
    int wakeDescriptor_ = -1;
    kernel::Identity wakeFile_;
    Scratch *lent_[2] = {};
    int cancelState_ = 0;
    bool holdsSignals_ = false;
    bool hasLooked_ = false;
    sigset_t signals_ = {}; // the program's
};

/** Sleeps until a deadline; what is left in the programs' time when a signal comes, else 0. */
uint64_t sleepByBoard(const Deadline &deadline);

} // namespace vb
