#pragma once
// Where a path leads on a board. Its parts are looked up one by one as the kernel does it, links
// and
// ".." included, except that the board's own files lie in its folder.

#include "virtual_board/board/folder.h"

#include <climits>
#include <cstddef>

namespace vb {

/** Whether a link in the last place is followed, as most functions do, or is what they work on. */
enum class LastLink { Followed, Kept };

/** What a walk works in. It is too large for the stacks of some callers. */
struct WalkMemory {
    char rest[2 * PATH_MAX];   // what is still to be walked
    char path[PATH_MAX + 256]; // as far as it has been walked, as programs of the board see it
    char host[kMaxFolderPath + PATH_MAX + 512]; // where that lies on the host
    char target[PATH_MAX];                      // of a link
};

class PathWalk {
  public:
    enum class End {
        Host,    // on the host, and the path is good as it is
        Board,   // at one of the board's own files
        Beyond,  // on the host, by way of the board's files: the kernel needs another path
        Nowhere, // the walk fails
        Unknown, // it could not be found out
    };

    /**
     * Walks from a folder, that of a descriptor or AT_FDCWD, where the path is relative. The memory
     * and the path are used as long as this object.
     */
    PathWalk(const BoardFolder &board, WalkMemory &memory, int folder, const char *path,
             LastLink last);

    End end() const { return end_; }
    /** Nowhere: why. */
    int error() const { return error_; }
    /** Host: whether it is within the folder that has the board's files, by way of that. */
    bool isInFolder() const { return isInFolder_; }
    /** What leads the kernel to the same end. */
    const char *hostPath() const { return hostPath_; }
    /** Board: the path on the board, free of links and dots. */
    const char *boardPath() const { return memory_.path; }

  private:
    void walk();
    void start();
    bool step();
    bool follow(size_t length, bool canJump);
    bool enter(const char *part, size_t length);
    void leave();
    bool isFolder();
    size_t rootBefore(const char *path) const;
    void recogniseBoard();
    void look();
    const char *placeOnHost();
    const char *placeOnHost(const char *tail);
    void askKernel();
    void askKernelForParent();
    bool pathOfDescriptor(int fd);
    void arrive();
    bool leaveItToTheKernel();
    bool fail(int error);
    bool stop(End end);

    const BoardFolder &board_;
    WalkMemory &memory_;
    const int folder_;
    const char *const given_;
    const LastLink last_;

    char *rest_;
    size_t length_ = 0;          // of the walked path; 0: at the root
    unsigned links_ = 0;         // followed so far
    bool isHereOnBoard_ = false; // the walked path is one of the board's
    bool isOnBoard_ = false;     // or has been one on the way
    bool hasJumped_ = false;     // the last link leads to an open file rather than to its path
    const char *tail_ = "";      // what has to follow the last part: a slash, or a dot
    bool isInFolder_ = false;
    bool isOver_ = false;

    End end_ = End::Host;
    int error_ = 0;
    const char *hostPath_;
};

} // namespace vb
