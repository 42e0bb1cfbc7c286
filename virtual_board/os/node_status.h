#pragma once
// What programs see of the board's nodes when they examine them: character devices. For sources
// that differ in what the types of the C library are, so that nothing here may be shared between
// them.

#include "virtual_board/os/seam.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

/** A node's number, as the kernel's list of devices has it. */
struct DeviceNumber {
    unsigned major, minor;
};

constexpr DeviceNumber numberOf(const vb::NodeFound &found) {
    constexpr DeviceNumber kDriver = {240, 0}; // of those for local use
    constexpr DeviceNumber kMemory = {1, 1};
    constexpr unsigned kFlashMajor = 90; // and two minors for each partition
    if (found.node != vb::Node::Flash)
        return found.node == vb::Node::Driver ? kDriver : kMemory;
    return {kFlashMajor, 2 * vb::kFlashNumbers[found.partition]};
}

/** Makes a device of what lies in a node's place, when that is what has been examined. */
template <typename Info>
int examined(int result, Info *info) {
    if (result != 0 || vb::attachedFolder() == nullptr)
        return result;
    const vb::NodeFound found =
        vb::nodeWith({uint64_t{major(info->st_dev)} << 32 | minor(info->st_dev), info->st_ino});
    if (found.node == vb::Node::None)
        return result;
    const DeviceNumber number = numberOf(found);
    constexpr auto kType = static_cast<mode_t>(S_IFMT);
    info->st_mode = (info->st_mode & ~kType) | S_IFCHR;
    info->st_rdev = static_cast<decltype(info->st_rdev)>(makedev(number.major, number.minor));
    info->st_size = 0;
    info->st_blocks = 0;
    return result;
}

/** Examines what is at a path, where only the board's files can be nodes, or a descriptor. */
template <typename Info, typename Examine>
int examineAt(const vb::HostPath &path, Info *info, Examine examine, int flags = 0) {
    const int result = vb::callWithPath(path, -1, examine);
    const bool canBeNode = path.isOfBoard() || (flags & AT_EMPTY_PATH) != 0;
    return canBeNode ? examined(result, info) : result;
}

} // namespace

#define VB_SEAM_STAT(symbol, last, Info)                                                           \
    VB_SEAM(int, symbol, const char *path, Info info) {                                            \
        return examineAt(vb::HostPath(path, last), info,                                           \
                         [=](const char *host) { return VB_NEXT(symbol)(host, info); });           \
    }

#define VB_SEAM_FSTAT(symbol, Info)                                                                \
    VB_SEAM(int, symbol, int fd, Info info) {                                                      \
        return examined(VB_NEXT(symbol)(fd, info), info);                                          \
    }

#define VB_SEAM_STATAT(symbol, Info)                                                               \
    VB_SEAM(int, symbol, int folder, const char *path, Info info, int flags) {                     \
        const vb::HostPath target(path, vb::lastLinkAt(flags), folder);                            \
        return examineAt(                                                                          \
            target, info,                                                                          \
            [=](const char *host) { return VB_NEXT(symbol)(folder, host, info, flags); }, flags);  \
    }
