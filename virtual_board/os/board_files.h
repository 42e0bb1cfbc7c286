#pragma once
// What opens and transfers of the board's own files have in common.

#include "virtual_board/os/seam.h"

namespace vb {

/** A rule that a use of a board's file trips; its id is 0 when there is none. */
FaultRule fileFault(FaultOp op, const char *boardPath);

/**
 * A unit's programs are root's, and so are their files. On a board both are its owner's: what root
 * makes there is, too.
 */
void giveToOwner(const char *hostPath);

} // namespace vb
