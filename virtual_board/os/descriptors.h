#pragma once
// Which descriptors are of the board's devices.

#include "virtual_board/board/folder.h"
#include "virtual_board/board/kernel.h"

#include <cstdint>

namespace vb {

enum class Node { None, Driver, Memory, Flash };

struct NodeFound {
    Node node = Node::None;
    uint32_t partition = 0; // of flash
};

/** Learns which files stand for the nodes of a board; false when its driver's is not there. */
bool learnNodes(const BoardFolder &folder);
/** No board, no nodes. */
void forgetNodes();

/**
 * Whose a descriptor is. Descriptors are copied, passed, inherited and replaced in ways that nobody
 * sees, so the kernel is asked which file it is of, as soon as this process can have one of a node.
 */
NodeFound nodeOf(int fd);

/** Whose a file is that has been examined or is about to be opened. */
NodeFound nodeWith(const kernel::Identity &identity);

/**
 * From now on this process can have descriptors of the board's files, or one of the board's folders
 * as its working folder.
 */
void expectBoard();
bool isBoardExpected();

} // namespace vb
