#pragma once
// What is said of a scenario that is played.

#include "virtual_board/command/scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vboard {

/** How a step, or all of them, went. */
struct Outcome {
    const Step *step = nullptr; // of a verdict that one that failed, if any
    size_t number = 0;          // of the step, from 1; of a verdict how many went as expected
    uint64_t timeNs = 0;        // of the board, since the play began
    std::string reason;         // why it failed; empty: it did not
};

/** Lines for people and, as JSON, for programs. */
std::string stepLine(const Outcome &outcome);
std::string stepJson(const Outcome &outcome);
std::string verdictLine(const Scenario &scenario, const Outcome &outcome);
std::string verdictJson(const Scenario &scenario, const Outcome &outcome);

/** All that a scenario says, a line for itself and one for each step. */
std::string scenarioJson(const Scenario &scenario);

/** A step that is being done, for a terminal; what replaces it begins with a carriage return. */
std::string underWay(const Step &step);

} // namespace vboard
