#include "iodbg/core/device_node.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "support/owned.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>

namespace iodbg {

namespace {

constexpr char kOfVirtualBoards[] = "VBOARD_DIR"; // in the environment of all their programs

/** What to do about a node that is not there. */
std::string adviceOnMissing(const std::string &path) {
    if (path == kKernelModuleNode)
        return "load the board's kernel module";
    return path.starts_with("/dev/mtd") ? "check the path, and /proc/mtd"
                                        : "see that the kernel provides it";
}

} // namespace

NodeState DeviceNode::state() const {
    switch (error) {
    case 0:
        return NodeState::Usable;
    case ENOENT:
    case ENOTDIR:
    case ENXIO: // a node without a driver behind it
    case ENODEV:
        return NodeState::Missing;
    case EACCES:
    case EPERM:
        return NodeState::NotPermitted;
    default:
        return NodeState::Broken;
    }
}

std::string DeviceNode::trouble() const {
    switch (state()) {
    case NodeState::Usable:
        return "";
    case NodeState::Missing:
        return error == ENOENT || error == ENOTDIR ? path + " does not exist"
                                                   : path + " has no driver";
    case NodeState::NotPermitted:
        return path + " may not be opened";
    case NodeState::Broken:
        return path + " cannot be opened: " + std::strerror(error);
    }
    return "";
}

std::string DeviceNode::advice() const {
    switch (state()) {
    case NodeState::Missing:
        return adviceOnMissing(path);
    case NodeState::NotPermitted:
        return "run iodbg as root";
    case NodeState::Usable:
    case NodeState::Broken:
        break;
    }
    return "see the kernel log";
}

std::string DeviceNode::hint() const {
    return state() == NodeState::Usable ? "see the kernel log for " + path
                                        : trouble() + ": " + advice();
}

DeviceNode tryNode(const std::string &path) {
    const bsp::Descriptor node(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return {path, node.isOpen() ? 0 : errno};
}

void requireKernelModule() {
    const DeviceNode node = tryKernelModule();
    if (node.state() != NodeState::Usable)
        throw Failure(ExitCode::Board, "the kernel module cannot be reached: " + node.trouble() +
                                           "; " + node.advice());
}

std::string boardlessHint() {
    if (std::getenv(kOfVirtualBoards) != nullptr ||
        tryKernelModule().state() != NodeState::Missing ||
        tryNode(BSP_MTD_BOOT_SETTINGS).state() != NodeState::Missing)
        return "";
    return "without a board: vboard run DIR -- iodbg ...";
}

void requireBoard() {
    if (!boardlessHint().empty())
        requireKernelModule();
}

} // namespace iodbg
