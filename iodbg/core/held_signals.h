#pragma once
// Work that can be left at certain points only: a Ctrl-C waits for the next one.

#include "command_line/blocked_signals.h"

namespace iodbg {

/**
 * Holds back the signals that ask a program to end, as long as it lives: Ctrl-C, a lost terminal,
 * kill. One that still waits at the end is forgotten, because the work is done by then.
 */
class HeldSignals {
  public:
    HeldSignals();
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;
    ~HeldSignals();

    /** The signal that waits; 0 when none does. */
    int waiting() const;
    /** Ends the program by a signal, as it would have ended without this. */
    [[noreturn]] static void endBy(int signal);

  private:
    const command_line::BlockedSignals held_;
};

} // namespace iodbg
