#pragma once
// One at a time works on a board.

#include "virtual_board/board/folder.h"

#include <csignal>

namespace vb {

/** Blocks all signals of this thread but those that it sends to itself by what it does wrong. */
void blockSignals(sigset_t &before);

/**
 * Keeps every other process and thread away from a board for the lifetime of this object, and this
 * thread's signal handlers and cancellation, which might come for the board themselves. Each lock
 * opens the lock file anew, so it survives whatever a program does with its descriptors and is
 * released by the kernel when its holder dies. No child inherits one: forks wait for it.
 */
class BoardLock {
  public:
    /** Who only looks leaves those in peace who wait for a change. */
    enum class Use { Changes, Looks };

    explicit BoardLock(const BoardFolder &folder, Use use = Use::Changes);
    BoardLock(const BoardLock &) = delete;
    BoardLock &operator=(const BoardLock &) = delete;
    ~BoardLock();

    /** Whether the lock could be taken: its file may be gone, or out of reach. */
    bool isHeld() const { return fd_ >= 0; }

    /**
     * Does something while others may use the board; signals and cancellation of this thread wait
     * on. False when the lock cannot be taken again.
     */
    template <typename Meanwhile>
    bool letOthersIn(Meanwhile meanwhile) {
        giveBack();
        meanwhile();
        take();
        return isHeld();
    }

  private:
    void take();
    void giveBack();

    const BoardFolder &folder_;
    Use use_;
    sigset_t signals_;
    int cancelType_ = 0;
    int cancelState_ = 0;
    int fd_;
};

} // namespace vb
