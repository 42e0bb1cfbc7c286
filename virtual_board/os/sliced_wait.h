#pragma once
// Waits that cannot be polled for. Each is waited for in slices of the host's time, between which
// the board's clock is looked at: nothing is lost by asking again.

#include "virtual_board/os/board_wait.h"

#include <algorithm>

namespace vb {

/**
 * Waits by the board's clock for what a function waits for so many ns of the host's at most; with 0
 * it only looks. isOver tells whether its result is that the time is over.
 */
template <typename Try, typename IsOver>
auto waitInSlices(const Deadline &deadline, Try tryFor, IsOver isOver) {
    constexpr uint64_t kLongestNs = 3600'000'000'000;
    BoardWait wait(WaitKind::Lock, deadline);
    while (wait.goesOn()) {
        const auto result = tryFor(std::min(wait.hostNs(), kLongestNs));
        if (!isOver(result))
            return result;
    }
    wait.end();
    return tryFor(uint64_t{0});
}

} // namespace vb
