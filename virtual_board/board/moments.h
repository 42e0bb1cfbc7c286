#pragma once
// When something happens on a board by itself.

#include "virtual_board/board/board.h"

#include <cstdint>

namespace vb {

/**
 * The next moment behind now at which a property of the board, as it is now, can change because
 * time passes.
 */
uint64_t nextMoment(const Board &board, uint64_t nowNs);

} // namespace vb
