#include "virtual_board/os/path_glance.h"

#include "virtual_board/board/kernel.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/os/descriptor_link.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <iterator>
#include <linux/openat2.h>

namespace vb {

namespace {

std::atomic<bool> cannotAsk; // the kernel, or who stands before it, does not know the question

/** Whether the kernel finds no link on the way, as far as there is one. */
bool isFreeOfLinks(int folder, const char *path, LastLink last) {
    if (cannotAsk.load(std::memory_order_relaxed))
        return false;
    open_how how = {};
    how.flags = O_PATH | O_CLOEXEC;
    if (last == LastLink::Kept)
        how.flags |= O_NOFOLLOW;
    how.resolve = RESOLVE_NO_SYMLINKS;
    const auto fd = static_cast<int>(kernel::call(SYS_openat2, folder, path, &how, sizeof(how)));
    if (fd >= 0) {
        kernel::close(fd);
        return true;
    }
    if (errno == ENOSYS || errno == EPERM || errno == E2BIG)
        cannotAsk.store(true, std::memory_order_relaxed);
    return errno == ENOENT || errno == ENOTDIR || errno == EACCES || errno == EFAULT;
}

bool startsWith(const char *text, const char *start) {
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

/** Whether the first part of a path is one of those on the way to the board's files. */
bool isOnWayToBoard(const char *path) {
    constexpr const char *kFromRoot[] = {"dev", "proc", "tmp"};
    constexpr const char *kFromThere[] = {"bsp", "mem", "mtd", "cmdline"};
    const bool isAbsolute = path[0] == '/';
    path += std::strspn(path, "/");
    while (path[0] == '.' && (path[1] == '/' || path[1] == '\0'))
        path += 1 + std::strspn(path + 1, "/");
    const auto isFirst = [path](const char *part) { return startsWith(path, part); };
    return std::any_of(std::begin(kFromRoot), std::end(kFromRoot), isFirst) ||
           (!isAbsolute && std::any_of(std::begin(kFromThere), std::end(kFromThere), isFirst));
}

} // namespace

void prepareGlances() {
    // Valgrind complains of calls that it does not know, and this is one for most of its versions.
    // It is told by what it brings into the program.
    cannotAsk = dlsym(RTLD_DEFAULT, "_vgnU_freeres") != nullptr;
}

bool leadsPastBoard(const BoardFolder &board, int folder, const char *path, LastLink last) {
    if (goesUp(path) || isOnWayToBoard(path) || startsWith(path, board.rootPath()))
        return false;
    if (std::strchr(path, '/') != nullptr)
        return isFreeOfLinks(folder, path, last);
    char nothing = '\0';
    return last == LastLink::Kept || kernel::readLink(folder, path, &nothing, sizeof(nothing)) < 0;
}

bool mayBeOnBoard(const BoardFolder &board, int folder) {
    // Only the start of the path matters, and few folders have a longer one.
    char path[512];
    const char *link = "/proc/self/cwd";
    const DescriptorLink linkOfFolder(folder);
    if (folder != AT_FDCWD)
        link = linkOfFolder.text;
    const ssize_t length = kernel::readLink(AT_FDCWD, link, path, sizeof(path));
    const size_t compared = std::min(std::strlen(board.rootPath()), sizeof(path));
    return length < 0 || (static_cast<size_t>(length) >= compared &&
                          std::memcmp(path, board.rootPath(), compared) == 0);
}

} // namespace vb
