#pragma once
// Whether the state of a board can be worked with. The file that holds it lies in a folder of its
// user's, where anything may happen to it.

#include "virtual_board/board/board.h"

namespace vb {

/**
 * The part of a board that holds values which it cannot have, or null. They index, divide and tell
 * lengths: nothing of such a board may be followed. Records of the trace are judged one by one when
 * they are read. hostNs is the host's time.
 */
const char *damagedPart(const Board &board, uint64_t hostNs);

/** Puts right what a process can leave wrong that is killed amid a change, or the host that starts
 * anew. */
void mendBoard(Board &board, const HostTime &host);

} // namespace vb
