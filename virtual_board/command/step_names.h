#pragma once
// The names that steps give to faults and programs, and by which later steps call them.

#include "virtual_board/command/complaints.h"
#include "virtual_board/command/scenario.h"

#include <map>
#include <set>
#include <string>

namespace vboard {

class StepNames {
  public:
    explicit StepNames(Complaints &complaints) : complaints_(complaints) {}

    /** Looks at those of a step, which is behind those that were looked at. */
    void judge(const Step &step);

  private:
    void judgeNew(const Step &step);

    Complaints &complaints_;
    std::set<std::string> names_;
    std::map<std::string, Deed> inForce_; // those that are not cleared or stopped
};

} // namespace vboard
