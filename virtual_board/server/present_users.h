#pragma once
// Who has a board in use. To find them means to look at all processes of the machine, so that is
// done when something tells that there are others, and else now and then.

#include "virtual_board/calls/board.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vboard::server {

class PresentUsers {
  public:
    /** "iodbg 4711, python3 4712" */
    const std::string &text(const Board &board);

    bool isOutdated() const;
    /** Tells of a process that has sent the board a request. */
    void note(int32_t pid);

  private:
    using Clock = std::chrono::steady_clock;

    void look(const Board &board);

    std::vector<int32_t> pids_;
    std::string text_;
    bool hasNew_ = true;
    Clock::time_point looked_;
};

} // namespace vboard::server
