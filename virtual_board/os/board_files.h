#pragma once
// What opens and transfers of the board's own files have in common.

#include "virtual_board/os/seam.h"

namespace vb {

/**
 * Records the open of a board's file. Each request opens the driver's node: only failures of that
 * count.
 */
void traceOpen(const char *path, int error);

/** A rule that a use of a board's file trips; its id is 0 when there is none. */
FaultRule fileFault(FaultOp op, const char *boardPath);

} // namespace vb
