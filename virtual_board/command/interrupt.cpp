#include "virtual_board/command/interrupt.h"

#include <cmath>
#include <ctime>

namespace vboard {

bool Rounds::pause(double seconds) const {
    constexpr double kNsPerSecond = 1e9;
    double whole = 0;
    const double rest = std::modf(seconds, &whole);
    const timespec length = {static_cast<time_t>(whole), static_cast<long>(rest * kNsPerSecond)};
    return sigtimedwait(&interrupt_.all(), nullptr, &length) != SIGINT;
}

} // namespace vboard
