#pragma once
// The nodes below /dev by which parts of the board are reached, and what keeps iodbg from one.

#include <string>

namespace iodbg {

constexpr char kKernelModuleNode[] = "/dev/bspHandle";

enum class NodeState { Usable, Missing, NotPermitted, Broken };

/** What an open of a node came to. */
struct DeviceNode {
    std::string path;
    int error = 0; // of the open; 0: it can be opened

    NodeState state() const;
    /** "/dev/mtd12 does not exist" */
    std::string trouble() const;
    /** What to do about it, or where to look when it can be opened. */
    std::string advice() const;
    /** Both, for what failed behind it. */
    std::string hint() const;
};

/** Opens a node for reading and closes it again. */
DeviceNode tryNode(const std::string &path);
inline DeviceNode tryKernelModule() {
    return tryNode(kKernelModuleNode);
}

/** Throws where the kernel module cannot be reached. */
void requireKernelModule();

/** How to go on where there is no board at all; empty where there is one, a virtual one too. */
std::string boardlessHint();

/** Throws where nothing of a board is there: nothing can be judged. */
void requireBoard();

} // namespace iodbg
