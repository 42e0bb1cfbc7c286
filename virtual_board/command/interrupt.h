#pragma once
// What goes on until somebody presses Ctrl-C, which is then its proper end, with exit code 0.

#include "command_line/blocked_signals.h"

namespace vboard {

/** Work in rounds. As long as it lives, Ctrl-C waits until a round is through. */
class Rounds {
  public:
    /** The pause behind a round; false when Ctrl-C has ended the work. */
    bool pause(double seconds) const;

  private:
    static constexpr int kInterrupt[] = {SIGINT};

    const command_line::BlockedSignals interrupt_{kInterrupt};
};

} // namespace vboard
