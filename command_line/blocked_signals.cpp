#include "command_line/blocked_signals.h"

namespace command_line {

BlockedSignals::BlockedSignals(std::span<const int> signals) {
    sigemptyset(&all_);
    for (const int signal : signals)
        sigaddset(&all_, signal);
    sigprocmask(SIG_BLOCK, &all_, &before_);
}

BlockedSignals::~BlockedSignals() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace command_line
