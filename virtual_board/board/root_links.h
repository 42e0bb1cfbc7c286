#pragma once
// Links in the folder with the board's files.

#include "virtual_board/board/folder.h"

namespace vb {

/** Whether a link in a folder of the board would lead to other files than the board's. */
bool leadsOutOfBoard(const char *boardFolder, const char *target);

/**
 * Finds a link that would lead programs of the board to other files than the board's; its place in
 * the board's folder, or an empty text.
 */
HostPathBuffer linkOutOfBoard(const BoardFolder &folder);

} // namespace vb
