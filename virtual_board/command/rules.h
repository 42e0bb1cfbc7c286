#pragma once
// Fault rules of a board.

#include "virtual_board/command/commands.h"
#include "virtual_board/include/vboard.h"

namespace vboard {

/** Adds a rule; its number. */
uint32_t addRule(VBoard *board, const FaultWords &rule);

} // namespace vboard
