#pragma once
// How fans and temperature sensor are connected: level, tachometers and presence to the CPLD, and
// what warms the board.

#include "virtual_board/board/board.h"

namespace vb {

/** Builds fans and sensor as they are in a unit that idles. */
void buildClimate(Board &board, const Model &model);

/** Settles them where the sensor tells so many degrees, for what the board carries now. */
void settleClimateAt(Board &board, int32_t degrees);

/** Puts what they tell on the lines of a CPLD that has been reset. */
void startClimateLines(Board &board);

/** Brings fans and temperature up to now, and what they tell to the CPLD. */
void advanceClimate(Board &board, uint64_t nowNs);

} // namespace vb
