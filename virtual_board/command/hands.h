#pragma once
// What the steps of a scenario do to a board, when it is played and when it is tried.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/scenario.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vboard {

class Hands {
  public:
    explicit Hands(const Board &board) : board_(board) {}

    /** All of the changes, or none. */
    void set(const std::vector<PlacedChange> &changes) const;
    void addFault(const Step &step);
    /** Those of a name, or all. */
    void clearFaults(const std::string &name);
    /** So long, of the host's time, a program may run until it waits. */
    void advance(uint64_t ns, uint64_t patienceNs = VBOARD_USUAL_PATIENCE) const;

  private:
    const Board &board_;
    std::map<std::string, uint32_t> faults_; // the numbers of those that have names
};

} // namespace vboard
