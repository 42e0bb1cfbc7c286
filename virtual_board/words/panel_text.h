#pragma once
// The front panel in text.

#include "virtual_board/board/board.h"

#include <string>

namespace vb {

/**
 * Ports as they lie on the panel, odd ones above even ones, with PoE state and LED; cages, fans and
 * supplies; and what the signs mean. Colours are those of terminals.
 */
std::string panelText(const Board &board, uint64_t nowNs, bool hasColour);

} // namespace vb
