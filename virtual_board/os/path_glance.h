#pragma once
// Most paths have nothing to do with the board, which a glance can tell: walking each would make
// programs slow that look at many files.

#include "virtual_board/os/path_walk.h"

namespace vb {

/** Finds out what can be asked; once, before anything is looked at. */
void prepareGlances();

/**
 * Whether a path leads to the host for sure, so that it need not be walked: it has no link and no
 * ".." on its way and comes to none of the places where a board has files. A relative path must
 * start outside of the board's files. False when a glance does not tell.
 */
bool leadsPastBoard(const BoardFolder &board, int folder, const char *path, LastLink last);

/** Whether the folder that relative paths start at may be one of the board's own. */
bool mayBeOnBoard(const BoardFolder &board, int folder);

} // namespace vb
