// What takes a path and does not open it.

#include "virtual_board/board/root_links.h"
#include "virtual_board/os/board_files.h"

#include <climits>
#include <cstring>

namespace {

using vb::LastLink;

/** A path where something new is made: below one of the board's folders that is its, too. */
vb::HostPath newPath(const char *path, int folder = AT_FDCWD) {
    return vb::HostPath(path, LastLink::Kept, folder, vb::HostPath::Use::Opened);
}

/** Calls what makes something new at a path. On the board that is its owner's. */
template <typename Call>
int makeAt(const vb::HostPath &path, Call call) {
    if (path.isOfBoard() && vb::attachedFolder()->isGone())
        return vb::failWith(ENOENT);
    const int result = vb::callWithPath(path, -1, call);
    if (result == 0 && path.isOfBoard())
        vb::attachedFolder()->giveToOwner(path.get());
    return result;
}

/** Whether a new link of the board would have its folder refused from then on. */
bool wouldLeadOut(const vb::HostPath &link, const char *content) {
    if (!link.isOfBoard() || content == nullptr || !vb::kernel::isReadable(content) ||
        strnlen(content, PATH_MAX) == PATH_MAX)
        return false; // the kernel knows whether and why it fails
    char folder[vb::kMaxBoardPath] = {};
    std::strncpy(folder, link.onBoard(), sizeof(folder) - 1);
    *std::strrchr(folder, '/') = '\0';
    return vb::leadsOutOfBoard(folder, content);
}

/** Calls what makes a link. One that leads out of the board's folder is none that it can have. */
template <typename Call>
int makeLinkAt(const vb::HostPath &path, const char *content, Call call) {
    return wouldLeadOut(path, content) ? vb::failWith(EPERM) : makeAt(path, call);
}

/** Calls what replaces or removes the file at a path. */
template <typename Call>
int replaceAt(const vb::HostPath &path, Call call) {
    return path.isOfKernel() ? vb::failWith(EPERM) : vb::callWithPath(path, -1, call);
}

template <typename Call>
int replaceAt(const vb::HostPath &from, const vb::HostPath &to, Call call) {
    if (to.isOfBoard() && vb::attachedFolder()->isGone())
        return vb::failWith(ENOENT);
    return replaceAt(from, [&](const char *hostFrom) {
        return replaceAt(to, [&](const char *hostTo) { return call(hostFrom, hostTo); });
    });
}

} // namespace

// A path alone, and the working folder

#define VB_SEAM_REMOVE(symbol)                                                                     \
    VB_SEAM(int, symbol, const char *path) {                                                       \
        return replaceAt(vb::HostPath(path, LastLink::Kept),                                       \
                         [](const char *host) { return VB_NEXT(symbol)(host); });                  \
    }
VB_SEAM_REMOVE(unlink)
VB_SEAM_REMOVE(rmdir)
VB_SEAM_REMOVE(remove)

VB_SEAM(int, chdir, const char *path) {
    return vb::callWithPath(vb::HostPath(path), -1,
                            [](const char *host) { return VB_NEXT(chdir)(host); });
}

// A path and one argument or two

#define VB_SEAM_PATH_WITH(symbol, last, result, type)                                              \
    VB_SEAM(result, symbol, const char *path, type argument) {                                     \
        return vb::callWithPath(vb::HostPath(path, last), [=](const char *host) {                  \
            return VB_NEXT(symbol)(host, argument);                                                \
        });                                                                                        \
    }
VB_SEAM_PATH_WITH(access, LastLink::Followed, int, int)
VB_SEAM_PATH_WITH(euidaccess, LastLink::Followed, int, int)
VB_SEAM_PATH_WITH(eaccess, LastLink::Followed, int, int)
VB_SEAM_PATH_WITH(chmod, LastLink::Followed, int, mode_t)
VB_SEAM_PATH_WITH(lchmod, LastLink::Kept, int, mode_t)
VB_SEAM_PATH_WITH(truncate, LastLink::Followed, int, off_t)
VB_SEAM_PATH_WITH(truncate64, LastLink::Followed, int, off64_t)
VB_SEAM_PATH_WITH(utime, LastLink::Followed, int, const void *)
VB_SEAM_PATH_WITH(__utime64, LastLink::Followed, int, const void *)
VB_SEAM_PATH_WITH(utimes, LastLink::Followed, int, const void *)
VB_SEAM_PATH_WITH(__utimes64, LastLink::Followed, int, const void *)
VB_SEAM_PATH_WITH(lutimes, LastLink::Kept, int, const void *)
VB_SEAM_PATH_WITH(__lutimes64, LastLink::Kept, int, const void *)
VB_SEAM_PATH_WITH(statfs, LastLink::Followed, int, void *)
VB_SEAM_PATH_WITH(statfs64, LastLink::Followed, int, void *)
VB_SEAM_PATH_WITH(statvfs, LastLink::Followed, int, void *)
VB_SEAM_PATH_WITH(statvfs64, LastLink::Followed, int, void *)
VB_SEAM_PATH_WITH(pathconf, LastLink::Followed, long, int)
VB_SEAM_PATH_WITH(removexattr, LastLink::Followed, int, const char *)
VB_SEAM_PATH_WITH(lremovexattr, LastLink::Kept, int, const char *)

#define VB_SEAM_PATH_WITH_TWO(symbol, last, result, first, second)                                 \
    VB_SEAM(result, symbol, const char *path, first one, second two) {                             \
        return vb::callWithPath(vb::HostPath(path, last), [=](const char *host) {                  \
            return VB_NEXT(symbol)(host, one, two);                                                \
        });                                                                                        \
    }
VB_SEAM_PATH_WITH_TWO(chown, LastLink::Followed, int, uid_t, gid_t)
VB_SEAM_PATH_WITH_TWO(lchown, LastLink::Kept, int, uid_t, gid_t)
VB_SEAM_PATH_WITH_TWO(listxattr, LastLink::Followed, ssize_t, char *, size_t)
VB_SEAM_PATH_WITH_TWO(llistxattr, LastLink::Kept, ssize_t, char *, size_t)

#define VB_SEAM_GETXATTR(symbol, last)                                                             \
    VB_SEAM(ssize_t, symbol, const char *path, const char *name, void *value, size_t size) {       \
        return vb::callWithPath(vb::HostPath(path, last), ssize_t{-1}, [=](const char *host) {     \
            return VB_NEXT(symbol)(host, name, value, size);                                       \
        });                                                                                        \
    }
VB_SEAM_GETXATTR(getxattr, LastLink::Followed)
VB_SEAM_GETXATTR(lgetxattr, LastLink::Kept)

#define VB_SEAM_SETXATTR(symbol, last)                                                             \
    VB_SEAM(int, symbol, const char *path, const char *name, const void *value, size_t size,       \
            int flags) {                                                                           \
        return vb::callWithPath(vb::HostPath(path, last), -1, [=](const char *host) {              \
            return VB_NEXT(symbol)(host, name, value, size, flags);                                \
        });                                                                                        \
    }
VB_SEAM_SETXATTR(setxattr, LastLink::Followed)
VB_SEAM_SETXATTR(lsetxattr, LastLink::Kept)

// Making what is no plain file

#define VB_SEAM_MAKE(symbol)                                                                       \
    VB_SEAM(int, symbol, const char *path, mode_t mode) {                                          \
        return makeAt(newPath(path),                                                               \
                      [=](const char *host) { return VB_NEXT(symbol)(host, mode); });              \
    }
VB_SEAM_MAKE(mkdir)
VB_SEAM_MAKE(mkfifo)

#define VB_SEAM_MAKEAT(symbol)                                                                     \
    VB_SEAM(int, symbol, int folder, const char *path, mode_t mode) {                              \
        return makeAt(newPath(path, folder),                                                       \
                      [=](const char *host) { return VB_NEXT(symbol)(folder, host, mode); });      \
    }
VB_SEAM_MAKEAT(mkdirat)
VB_SEAM_MAKEAT(mkfifoat)

VB_SEAM(int, mknod, const char *path, mode_t mode, dev_t device) {
    return makeAt(newPath(path),
                  [=](const char *host) { return VB_NEXT(mknod)(host, mode, device); });
}

VB_SEAM(int, mknodat, int folder, const char *path, mode_t mode, dev_t device) {
    return makeAt(newPath(path, folder),
                  [=](const char *host) { return VB_NEXT(mknodat)(folder, host, mode, device); });
}

VB_SEAM(int, symlink, const char *content, const char *path) {
    return makeLinkAt(newPath(path), content,
                      [=](const char *host) { return VB_NEXT(symlink)(content, host); });
}

VB_SEAM(int, symlinkat, const char *content, int folder, const char *path) {
    return makeLinkAt(newPath(path, folder), content,
                      [=](const char *host) { return VB_NEXT(symlinkat)(content, folder, host); });
}

// A folder's descriptor and a path

#define VB_SEAM_PATHAT_WITH(symbol, type)                                                          \
    VB_SEAM(int, symbol, int folder, const char *path, type argument, int flags) {                 \
        return vb::callWithPath(                                                                   \
            vb::HostPath(path, vb::lastLinkAt(flags), folder), -1,                                 \
            [=](const char *host) { return VB_NEXT(symbol)(folder, host, argument, flags); });     \
    }
VB_SEAM_PATHAT_WITH(faccessat, int)
VB_SEAM_PATHAT_WITH(fchmodat, mode_t)
VB_SEAM_PATHAT_WITH(utimensat, const void *)
VB_SEAM_PATHAT_WITH(__utimensat64, const void *)

VB_SEAM(int, futimesat, int folder, const char *path, const void *times) {
    return vb::callWithPath(
        vb::HostPath(path, LastLink::Followed, folder), -1,
        [=](const char *host) { return VB_NEXT(futimesat)(folder, host, times); });
}

VB_SEAM(int, fchownat, int folder, const char *path, uid_t user, gid_t group, int flags) {
    return vb::callWithPath(
        vb::HostPath(path, vb::lastLinkAt(flags), folder), -1,
        [=](const char *host) { return VB_NEXT(fchownat)(folder, host, user, group, flags); });
}

VB_SEAM(int, unlinkat, int folder, const char *path, int flags) {
    return replaceAt(vb::HostPath(path, LastLink::Kept, folder),
                     [=](const char *host) { return VB_NEXT(unlinkat)(folder, host, flags); });
}

VB_SEAM(int, inotify_add_watch, int fd, const char *path, uint32_t mask) {
    return vb::callWithPath(vb::HostPath(path), -1, [=](const char *host) {
        return VB_NEXT(inotify_add_watch)(fd, host, mask);
    });
}

// Two paths

VB_SEAM(int, rename, const char *from, const char *to) {
    return replaceAt(
        vb::HostPath(from, LastLink::Kept), vb::HostPath(to, LastLink::Kept),
        [](const char *hostFrom, const char *hostTo) { return VB_NEXT(rename)(hostFrom, hostTo); });
}

VB_SEAM(int, renameat, int fromFolder, const char *from, int toFolder, const char *to) {
    return replaceAt(vb::HostPath(from, LastLink::Kept, fromFolder),
                     vb::HostPath(to, LastLink::Kept, toFolder),
                     [=](const char *hostFrom, const char *hostTo) {
                         return VB_NEXT(renameat)(fromFolder, hostFrom, toFolder, hostTo);
                     });
}

VB_SEAM(int, renameat2, int fromFolder, const char *from, int toFolder, const char *to,
        unsigned flags) {
    return replaceAt(vb::HostPath(from, LastLink::Kept, fromFolder),
                     vb::HostPath(to, LastLink::Kept, toFolder),
                     [=](const char *hostFrom, const char *hostTo) {
                         return VB_NEXT(renameat2)(fromFolder, hostFrom, toFolder, hostTo, flags);
                     });
}

VB_SEAM(int, link, const char *from, const char *to) {
    return replaceAt(
        vb::HostPath(from, LastLink::Kept), vb::HostPath(to, LastLink::Kept),
        [](const char *hostFrom, const char *hostTo) { return VB_NEXT(link)(hostFrom, hostTo); });
}

VB_SEAM(int, linkat, int fromFolder, const char *from, int toFolder, const char *to, int flags) {
    const LastLink last = (flags & AT_SYMLINK_FOLLOW) != 0 ? LastLink::Followed : LastLink::Kept;
    return replaceAt(vb::HostPath(from, last, fromFolder),
                     vb::HostPath(to, LastLink::Kept, toFolder),
                     [=](const char *hostFrom, const char *hostTo) {
                         return VB_NEXT(linkat)(fromFolder, hostFrom, toFolder, hostTo, flags);
                     });
}
