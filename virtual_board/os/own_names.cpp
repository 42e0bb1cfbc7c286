// What tells programs the paths of files: those of the board's are the paths that it has for them.

#include "virtual_board/board/paths.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

using vb::LastLink;

/** The path of the board's that a path on the host stands for, or null; it ends where that ends. */
const char *nameOnBoard(const char *path, size_t length) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    const size_t root = folder != nullptr ? std::strlen(folder->rootPath()) : 0;
    const bool isBelow = folder != nullptr && length > root && path[root] == '/' &&
                         std::memcmp(path, folder->rootPath(), root) == 0;
    if (!isBelow)
        return nullptr;
    char tidied[vb::kMaxBoardPath];
    if (length - root >= sizeof(tidied))
        return nullptr;
    std::memcpy(tidied, path + root, length - root);
    tidied[length - root] = '\0';
    return vb::isBoardPath(tidied) ? path + root : nullptr;
}

/** Replaces a path on the host by the shorter one on the board; its length. */
size_t replaceByOwnName(char *path, size_t length) {
    const char *name = nameOnBoard(path, length);
    if (name == nullptr)
        return length;
    const auto nameLength = static_cast<size_t>(path + length - name);
    std::memmove(path, name, nameLength);
    return nameLength;
}

char *withOwnName(char *path) {
    if (path != nullptr)
        path[replaceByOwnName(path, std::strlen(path))] = '\0';
    return path;
}

/** The working folder, which on the board may fit where its path on the host does not. */
char *ownFolder(char *found, char *path, size_t size) {
    if (found != nullptr || errno != ERANGE || path == nullptr || vb::attachedFolder() == nullptr)
        return withOwnName(found);
    vb::Scratch scratch;
    auto *whole = static_cast<char *>(scratch.take());
    const ssize_t length = whole != nullptr ? vb::kernel::workingFolder(whole, PATH_MAX) : 0;
    const char *name = length > 0 ? nameOnBoard(whole, static_cast<size_t>(length) - 1) : nullptr;
    errno = ERANGE;
    if (name == nullptr || std::strlen(name) >= size)
        return nullptr;
    stpcpy(path, name);
    return path;
}

/** Whether a link's target may lie in the board's root, as far as it has been told. */
bool canBeInRoot(const char *target, size_t length, size_t size) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr)
        return false;
    const size_t root = std::strlen(folder->rootPath());
    return (length > root || length == size) &&
           std::memcmp(target, folder->rootPath(), std::min(length, root)) == 0;
}

/**
 * What a link's target is on the board, when it has been read: it has no zero behind it, and may be
 * cut short.
 */
ssize_t ownTarget(ssize_t count, int folder, const char *host, char *target, size_t size) {
    if (count <= 0 || !canBeInRoot(target, static_cast<size_t>(count), size))
        return count;
    vb::Scratch scratch;
    auto *whole = static_cast<char *>(scratch.take());
    const ssize_t length =
        whole != nullptr ? vb::kernel::readLink(folder, host, whole, PATH_MAX) : -1;
    if (length <= 0)
        return count;
    const size_t own = std::min(replaceByOwnName(whole, static_cast<size_t>(length)), size);
    std::memset(target, 0, static_cast<size_t>(count)); // as much as has been written
    std::memcpy(target, whole, own);
    return static_cast<ssize_t>(own);
}

/** The path of an existing file of the board, in the caller's memory or in new one. */
char *resolvedOnBoard(const vb::HostPath &target, char *resolved) {
    if (!vb::kernel::identityOf(AT_FDCWD, target.get()).isKnown())
        return nullptr;
    if (resolved == nullptr)
        return strdup(target.onBoard());
    stpcpy(resolved, target.onBoard());
    return resolved;
}

template <typename Resolve>
char *resolve(const char *path, char *resolved, Resolve resolveOnHost) {
    const vb::HostPath target(path);
    return target.isOfBoard()
               ? resolvedOnBoard(target, resolved)
               : vb::callWithPath(target, static_cast<char *>(nullptr), resolveOnHost);
}

} // namespace

VB_SEAM(char *, getcwd, char *path, size_t size) {
    return ownFolder(VB_NEXT(getcwd)(path, size), path, size);
}

VB_SEAM(char *, __getcwd_chk, char *path, size_t size, size_t room) {
    return ownFolder(VB_NEXT(__getcwd_chk)(path, size, room), path, size);
}

VB_SEAM(char *, getwd, char *path) {
    return withOwnName(VB_NEXT(getwd)(path));
}

VB_SEAM(char *, get_current_dir_name) {
    return withOwnName(VB_NEXT(get_current_dir_name)());
}

VB_SEAM(char *, realpath, const char *path, char *resolved) {
    return resolve(path, resolved,
                   [=](const char *host) { return VB_NEXT(realpath)(host, resolved); });
}

VB_SEAM(char *, __realpath_chk, const char *path, char *resolved, size_t room) {
    return resolve(path, resolved,
                   [=](const char *host) { return VB_NEXT(__realpath_chk)(host, resolved, room); });
}

VB_SEAM(char *, canonicalize_file_name, const char *path) {
    return resolve(path, nullptr,
                   [](const char *host) { return VB_NEXT(canonicalize_file_name)(host); });
}

VB_SEAM(ssize_t, readlink, const char *path, char *target, size_t size) {
    return vb::callWithPath(vb::HostPath(path, LastLink::Kept), ssize_t{-1}, [=](const char *host) {
        return ownTarget(VB_NEXT(readlink)(host, target, size), AT_FDCWD, host, target, size);
    });
}

VB_SEAM(ssize_t, readlinkat, int folder, const char *path, char *target, size_t size) {
    return vb::callWithPath(vb::HostPath(path, LastLink::Kept, folder), ssize_t{-1},
                            [=](const char *host) {
                                return ownTarget(VB_NEXT(readlinkat)(folder, host, target, size),
                                                 folder, host, target, size);
                            });
}

VB_SEAM(ssize_t, __readlink_chk, const char *path, char *target, size_t size, size_t room) {
    return vb::callWithPath(vb::HostPath(path, LastLink::Kept), ssize_t{-1}, [=](const char *host) {
        return ownTarget(VB_NEXT(__readlink_chk)(host, target, size, room), AT_FDCWD, host, target,
                         size);
    });
}

VB_SEAM(ssize_t, __readlinkat_chk, int folder, const char *path, char *target, size_t size,
        size_t room) {
    return vb::callWithPath(
        vb::HostPath(path, LastLink::Kept, folder), ssize_t{-1}, [=](const char *host) {
            return ownTarget(VB_NEXT(__readlinkat_chk)(folder, host, target, size, room), folder,
                             host, target, size);
        });
}
