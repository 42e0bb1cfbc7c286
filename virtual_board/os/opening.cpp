// Opening files. The board's own lie in its folder; everything else is where it always is.

#include "virtual_board/os/board_files.h"

#include <cstdarg>
#include <cstdio>

namespace {

/** Opened as a stream, whose transfers within the C library no seam sees. */
constexpr int kStream = -1;

/** The errno with which a node refuses to be opened; 0 when it does not, or is none. */
int nodeRefusal(const vb::NodeFound &found, int flags) {
    const bool isTransferred = found.node == vb::Node::Memory || found.node == vb::Node::Flash;
    if (flags == kStream)
        return isTransferred ? ENOTSUP : 0;
    if (found.node != vb::Node::Flash)
        return 0;
    const vb::Flash &flash = vb::attachedFolder()->board()->devices.flash[found.partition];
    return flash.isWriteProtected != 0 && (flags & O_ACCMODE) != O_RDONLY ? EACCES : 0;
}

/** The errno with which a board that is being removed refuses new files: they would keep it there.
 */
int refusalOfNew(int flags) {
    const bool canCreate = flags == kStream || (flags & O_CREAT) != 0;
    return canCreate && vb::attachedFolder()->isGone() ? ENOENT : 0;
}

vb::LastLink lastLinkFor(int flags) {
    constexpr int kNew = O_CREAT | O_EXCL;
    const bool isKept = flags != kStream && ((flags & O_NOFOLLOW) != 0 || (flags & kNew) == kNew);
    return isKept ? vb::LastLink::Kept : vb::LastLink::Followed;
}

/**
 * Opens a path with one of the C library's ways of opening, which takes the path on the host.
 * failed is what that way answers when the open fails; flags are those of open, or kStream.
 */
template <typename Result, typename Open>
Result openPath(int folder, const char *path, int flags, Result failed, Open openOnHost) {
    const vb::HostPath target(path, lastLinkFor(flags), folder, vb::HostPath::Use::Opened);
    if (!target.isOfBoard())
        return vb::callWithPath(target, failed, openOnHost);
    int errnoBehind = errno; // which a success leaves alone
    const vb::FaultRule fault = vb::fileFault(vb::FaultOp::Open, target.onBoard());
    const bool isFaulty = fault.id != 0 && fault.effect == vb::FaultEffect::OpenFails;
    const vb::NodeFound node = vb::nodeWith(vb::kernel::identityOf(AT_FDCWD, target.get()));
    const int refused = isFaulty ? fault.argument : nodeRefusal(node, flags);
    const int refusal = refused != 0 ? refused : refusalOfNew(flags);
    Result result = failed;
    if (refusal == 0)
        result = openOnHost(target.get());
    if (result == failed)
        errnoBehind = refusal != 0 ? refusal : errno;
    else if (node.node == vb::Node::None)
        vb::attachedFolder()->giveToOwner(target.get());
    vb::traceOpen(target.onBoard(), result == failed ? errnoBehind : 0);
    errno = errnoBehind;
    return result;
}

/** The mode behind the flags of an open that may create its file. */
mode_t modeArgument(int flags, va_list arguments) {
    constexpr int kTemporary = O_TMPFILE & ~O_DIRECTORY;
    return (flags & (O_CREAT | kTemporary)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#define VB_SEAM_OPEN(symbol)                                                                       \
    VB_SEAM(int, symbol, const char *path, int flags, ...) {                                       \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return openPath(AT_FDCWD, path, flags, -1,                                                 \
                        [=](const char *host) { return VB_NEXT(symbol)(host, flags, mode); });     \
    }
VB_SEAM_OPEN(open)
VB_SEAM_OPEN(open64)

#define VB_SEAM_OPENAT(symbol)                                                                     \
    VB_SEAM(int, symbol, int folder, const char *path, int flags, ...) {                           \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return openPath(folder, path, flags, -1, [=](const char *host) {                           \
            return VB_NEXT(symbol)(folder, host, flags, mode);                                     \
        });                                                                                        \
    }
VB_SEAM_OPENAT(openat)
VB_SEAM_OPENAT(openat64)

// What builds with source fortification call instead of the above.
#define VB_SEAM_OPEN_2(symbol)                                                                     \
    VB_SEAM(int, symbol, const char *path, int flags) {                                            \
        return openPath(AT_FDCWD, path, flags, -1,                                                 \
                        [=](const char *host) { return VB_NEXT(symbol)(host, flags); });           \
    }
VB_SEAM_OPEN_2(__open_2)
VB_SEAM_OPEN_2(__open64_2)

#define VB_SEAM_OPENAT_2(symbol)                                                                   \
    VB_SEAM(int, symbol, int folder, const char *path, int flags) {                                \
        return openPath(folder, path, flags, -1,                                                   \
                        [=](const char *host) { return VB_NEXT(symbol)(folder, host, flags); });   \
    }
VB_SEAM_OPENAT_2(__openat_2)
VB_SEAM_OPENAT_2(__openat64_2)

#define VB_SEAM_CREAT(symbol)                                                                      \
    VB_SEAM(int, symbol, const char *path, mode_t mode) {                                          \
        return openPath(AT_FDCWD, path, O_WRONLY | O_CREAT, -1,                                    \
                        [=](const char *host) { return VB_NEXT(symbol)(host, mode); });            \
    }
VB_SEAM_CREAT(creat)
VB_SEAM_CREAT(creat64)

#define VB_SEAM_FOPEN(symbol)                                                                      \
    VB_SEAM(FILE *, symbol, const char *path, const char *mode) {                                  \
        return openPath(AT_FDCWD, path, kStream, static_cast<FILE *>(nullptr),                     \
                        [=](const char *host) { return VB_NEXT(symbol)(host, mode); });            \
    }
VB_SEAM_FOPEN(fopen)
VB_SEAM_FOPEN(fopen64)

// Where it fails the old stream is closed all the same, which a path of nothing does.
#define VB_SEAM_FREOPEN(symbol)                                                                    \
    VB_SEAM(FILE *, symbol, const char *path, const char *mode, FILE *file) {                      \
        bool isClosed = false;                                                                     \
        const auto reopen = [&](const char *host) {                                                \
            isClosed = true;                                                                       \
            return VB_NEXT(symbol)(host, mode, file);                                              \
        };                                                                                         \
        FILE *opened = openPath(AT_FDCWD, path, kStream, static_cast<FILE *>(nullptr), reopen);    \
        const int savedErrno = errno;                                                              \
        if (!isClosed)                                                                             \
            VB_NEXT(symbol)("", mode, file);                                                       \
        errno = savedErrno;                                                                        \
        return opened;                                                                             \
    }
VB_SEAM_FREOPEN(freopen)
VB_SEAM_FREOPEN(freopen64)

VB_SEAM(FILE *, fdopen, int fd, const char *mode) {
    const int refusal = nodeRefusal(vb::nodeOf(fd), kStream);
    if (refusal == 0)
        return VB_NEXT(fdopen)(fd, mode);
    errno = refusal;
    return nullptr;
}

// Opens that a program leaves to the C library, for a child that it starts later.

VB_SEAM(int, posix_spawn_file_actions_addopen, void *actions, int fd, const char *path, int flags,
        mode_t mode) {
    const vb::HostPath target(path, lastLinkFor(flags));
    return target.error() != 0
               ? target.error()
               : VB_NEXT(posix_spawn_file_actions_addopen)(actions, fd, target.get(), flags, mode);
}

VB_SEAM(int, posix_spawn_file_actions_addchdir_np, void *actions, const char *path) {
    const vb::HostPath target(path);
    return target.error() != 0
               ? target.error()
               : VB_NEXT(posix_spawn_file_actions_addchdir_np)(actions, target.get());
}
