#pragma once
// What a board can tell of a scenario before it is played.

#include "virtual_board/command/scenario.h"

#include <string>

namespace vboard {

/**
 * Refuses what the board in a folder cannot have: names, values, conditions, fault rules, programs.
 * They are tried on a copy of the board, in their order, since the one can depend on the other: a
 * module is plugged before its link comes up.
 */
void checkScenario(const Scenario &scenario, const std::string &folder);

} // namespace vboard
