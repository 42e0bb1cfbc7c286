#pragma once
// The C library functions through which programs reach the board. They are defined here under their
// own names, so that a program that preloads or links this seam calls them; what concerns the
// attached board is answered from it, everything else goes on to the C library.

#include "virtual_board/board/lock.h"
#include "virtual_board/os/descriptors.h"
#include "virtual_board/os/next.h"
#include "virtual_board/os/path_walk.h"
#include "virtual_board/os/scratch.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace vb {

/** Attaches this process to the board in a folder. */
bool attachBoard(const char *path, FolderError &error);
void detachBoard();

/** The attached board's folder, or null. */
const BoardFolder *attachedFolder();

/** This process at this moment, as the board's trace names it. */
inline Sender thisSender(const Board &board) {
    return {getpid(), clockNow(board.clock, hostNow())};
}

/** The calling thread waits, as in a sleep of its own that the trace does not show. */
void letTimePass(uint64_t ns);

/**
 * What sleeps of a program that has mapped the page of registers do: the MDIO controller goes on.
 * The caller holds the board's lock.
 */
void pollRegisterPage(const BoardFolder &folder);

// What the C library's functions of these names do on a descriptor of a flash partition.
off64_t seekPartition(int fd, uint32_t partition, off64_t offset, int whence);
ssize_t readPartition(int fd, uint32_t partition, void *data, size_t length);
ssize_t writePartition(int fd, uint32_t partition, const void *data, size_t length);
ssize_t readPartitionAt(int fd, uint32_t partition, void *data, size_t length, off64_t offset);
ssize_t writePartitionAt(int fd, uint32_t partition, const void *data, size_t length,
                         off64_t offset);
int partitionIoctl(int fd, uint32_t partition, unsigned long code, void *argument);

/** Finds the folder of the board's own tools; false when it is not where it belongs. */
bool findTools(HostPathBuffer &tools);

/** Ends this process as a power failure does: at once. */
[[noreturn]] void cutPower();

/**
 * A path as the C library shall see it: inside the board's folder for the files that a board has of
 * its own, unchanged for all others.
 */
class HostPath {
  public:
    /** What is done with the file: uses that start at one of the board's folders count as its. */
    enum class Use { Named, Opened };

    explicit HostPath(const char *path, LastLink last = LastLink::Followed, int folder = AT_FDCWD,
                      Use use = Use::Named);

    /** Why there is nothing that the path leads to; 0 when there may be. */
    int error() const { return error_; }
    const char *get() const { return path_; }
    bool isOfBoard() const { return boardPath_ != nullptr; }
    /** Nodes, and what the kernel shows in /proc, are not a program's to replace or remove. */
    bool isOfKernel() const;
    /** The path on the board, free of links, doubled and idle parts; null for other files. */
    const char *onBoard() const { return boardPath_; }

  private:
    void find(int folder, LastLink last, Use use);
    void walk(int folder, LastLink last);

    const char *path_;
    const char *boardPath_ = nullptr;
    int error_ = 0;
    Scratch scratch_;
};

/** For functions whose flags are those of fstatat. */
inline LastLink lastLinkAt(int flags) {
    return (flags & AT_SYMLINK_NOFOLLOW) != 0 ? LastLink::Kept : LastLink::Followed;
}

/** Calls a function of the C library with the path that it shall see. */
template <typename Result, typename Call>
Result callWithPath(const HostPath &path, Result failed, Call call) {
    if (path.error() == 0)
        return call(path.get());
    errno = path.error();
    return failed;
}

/** The same of a function that tells with -1 that it fails. */
template <typename Call>
auto callWithPath(const HostPath &path, Call call) -> decltype(call(path.get())) {
    using Result = decltype(call(path.get()));
    return callWithPath(path, static_cast<Result>(-1), call);
}

/** Fails as functions of the C library do. */
inline int failWith(int error) {
    errno = error;
    return -1;
}

} // namespace vb
