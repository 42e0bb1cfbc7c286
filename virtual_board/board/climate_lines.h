#pragma once
// How fans and temperature sensor are connected: level, tachometers and presence to the CPLD, and
// what warms the board.

#include "virtual_board/board/board.h"

namespace vb {

/**
 * Whether the presence of fans 1 and 2, and of fans 3 and 4, is told by the lines that tell that of
 * supplies 1 and 2. Such a line shows what has changed last, and the supply at first.
 */
bool sharesPresenceLines(const Model &model);

/** Builds fans and sensor as they are in a unit that idles. */
void buildClimate(Board &board, const Model &model);

/** Puts what they tell on the lines of a CPLD that has been reset. */
void startClimateLines(Board &board);

/** Brings fans and temperature up to now, and what they tell to the CPLD. */
void advanceClimate(Board &board, uint64_t nowNs);

} // namespace vb
