#include "virtual_board/os/node_status.h"

using Status = struct stat *;
using Status64 = struct stat64 *;

VB_SEAM_STAT(stat, vb::LastLink::Followed, Status)
VB_SEAM_STAT(lstat, vb::LastLink::Kept, Status)
VB_SEAM_STAT(stat64, vb::LastLink::Followed, Status64)
VB_SEAM_STAT(lstat64, vb::LastLink::Kept, Status64)
VB_SEAM_FSTAT(fstat, Status)
VB_SEAM_FSTAT(fstat64, Status64)
VB_SEAM_STATAT(fstatat, Status)
VB_SEAM_STATAT(fstatat64, Status64)

// What builds for C libraries before 2.33 call instead.

#define VB_SEAM_XSTAT(symbol, last, Info)                                                          \
    VB_SEAM(int, symbol, int version, const char *path, Info info) {                               \
        return examineAt(vb::HostPath(path, last), info,                                           \
                         [=](const char *host) { return VB_NEXT(symbol)(version, host, info); });  \
    }
VB_SEAM_XSTAT(__xstat, vb::LastLink::Followed, Status)
VB_SEAM_XSTAT(__lxstat, vb::LastLink::Kept, Status)
VB_SEAM_XSTAT(__xstat64, vb::LastLink::Followed, Status64)
VB_SEAM_XSTAT(__lxstat64, vb::LastLink::Kept, Status64)

#define VB_SEAM_FXSTAT(symbol, Info)                                                               \
    VB_SEAM(int, symbol, int version, int fd, Info info) {                                         \
        return examined(VB_NEXT(symbol)(version, fd, info), info);                                 \
    }
VB_SEAM_FXSTAT(__fxstat, Status)
VB_SEAM_FXSTAT(__fxstat64, Status64)

#define VB_SEAM_FXSTATAT(symbol, Info)                                                             \
    VB_SEAM(int, symbol, int version, int folder, const char *path, Info info, int flags) {        \
        const vb::HostPath target(path, vb::lastLinkAt(flags), folder);                            \
        return examineAt(                                                                          \
            target, info,                                                                          \
            [=](const char *host) { return VB_NEXT(symbol)(version, folder, host, info, flags); }, \
            flags);                                                                                \
    }
VB_SEAM_FXSTATAT(__fxstatat, Status)
VB_SEAM_FXSTATAT(__fxstatat64, Status64)

// The same in the kernel's newer form

namespace {

int examinedAnew(int result, struct statx *info) {
    if (result != 0 || vb::attachedFolder() == nullptr)
        return result;
    const vb::NodeFound found =
        vb::nodeWith({uint64_t{info->stx_dev_major} << 32 | info->stx_dev_minor, info->stx_ino});
    if (found.node == vb::Node::None)
        return result;
    const DeviceNumber number = numberOf(found);
    info->stx_mode = static_cast<uint16_t>((info->stx_mode & ~S_IFMT) | S_IFCHR);
    info->stx_rdev_major = number.major;
    info->stx_rdev_minor = number.minor;
    info->stx_size = 0;
    info->stx_blocks = 0;
    return result;
}

} // namespace

VB_SEAM(int, statx, int folder, const char *path, int flags, unsigned mask, struct statx *info) {
    const vb::HostPath target(path, vb::lastLinkAt(flags), folder);
    const int result = vb::callWithPath(target, -1, [=](const char *host) {
        // Which file it is must be known, whether it was asked for or not.
        return VB_NEXT(statx)(folder, host, flags, mask | STATX_INO, info);
    });
    const bool isDescriptor = (flags & AT_EMPTY_PATH) != 0;
    return target.isOfBoard() || isDescriptor ? examinedAnew(result, info) : result;
}
