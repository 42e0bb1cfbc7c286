#include "virtual_board/command/interrupt.h"

#include <cmath>
#include <ctime>

namespace vboard {

Rounds::Rounds() {
    sigemptyset(&interrupt_);
    sigaddset(&interrupt_, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt_, &before_);
}

Rounds::~Rounds() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool Rounds::pause(double seconds) const {
    constexpr double kNsPerSecond = 1e9;
    double whole = 0;
    const double rest = std::modf(seconds, &whole);
    const timespec length = {static_cast<time_t>(whole), static_cast<long>(rest * kNsPerSecond)};
    return sigtimedwait(&interrupt_, nullptr, &length) != SIGINT;
}

} // namespace vboard
