#include "virtual_board/os/path_walk.h"

#include "virtual_board/board/kernel.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/os/descriptor_link.h"

#include <cerrno>
#include <cstring>

namespace vb {

namespace {

constexpr unsigned kMostLinks = 40; // the kernel's limit

bool isAbsolute(const char *path) {
    return path[0] == '/';
}

/** Whether links of a folder lead to what a process has open, whatever their text is. */
bool hasJumps(const char *folder) {
    constexpr char kProcesses[] = "/proc/";
    const size_t length = sizeof(kProcesses) - 1;
    return std::strncmp(folder, kProcesses, length) == 0 && folder[length] >= '0' &&
           folder[length] <= '9';
}

bool isDot(const char *part, size_t length) {
    return length == 1 && part[0] == '.';
}

bool isDoubleDot(const char *part, size_t length) {
    return length == 2 && part[0] == '.' && part[1] == '.';
}

} // namespace

PathWalk::PathWalk(const BoardFolder &board, WalkMemory &memory, int folder, const char *path,
                   LastLink last)
    : board_(board), memory_(memory), folder_(folder), given_(path), last_(last),
      rest_(memory.rest), hostPath_(path) {
    memory_.path[0] = '\0';
    // What is no path at all is the kernel's to refuse.
    const size_t length = strnlen(path, PATH_MAX);
    if (length == 0 || length == PATH_MAX)
        return;
    std::memcpy(memory_.rest, path, length + 1);
    if (!isAbsolute(path))
        start();
    while (!isOver_ && step()) {
    }
    if (!isOver_)
        arrive();
}

/** Starts at the folder of a relative path. */
void PathWalk::start() {
    char *path = memory_.path;
    if (folder_ == AT_FDCWD) {
        const ssize_t size = kernel::workingFolder(path, PATH_MAX);
        length_ = size > 0 ? static_cast<size_t>(size) - 1 : 0;
        if (size <= 0 || !isAbsolute(path)) {
            askKernel();
            return;
        }
    } else if (!pathOfDescriptor(folder_)) {
        askKernel();
        return;
    }
    if (length_ == 1)
        leave(); // the root
    recogniseBoard();
}

/** Makes the path of an open file the walked one; false when it has none that could be walked. */
bool PathWalk::pathOfDescriptor(int fd) {
    constexpr char kDeleted[] = " (deleted)";
    constexpr size_t kDeletedLength = sizeof(kDeleted) - 1;
    const ssize_t count =
        kernel::readLink(AT_FDCWD, DescriptorLink(fd).text, memory_.path, PATH_MAX);
    if (count <= 0 || count == PATH_MAX || !isAbsolute(memory_.path))
        return false;
    length_ = static_cast<size_t>(count);
    memory_.path[length_] = '\0';
    return length_ <= kDeletedLength ||
           std::strcmp(memory_.path + length_ - kDeletedLength, kDeleted) != 0;
}

/** One part of the path; false behind the last one. */
bool PathWalk::step() {
    rest_ += std::strspn(rest_, "/");
    if (*rest_ == '\0')
        return false;
    const char *part = rest_;
    const size_t length = std::strcspn(part, "/");
    rest_ += length;
    const bool isLast = rest_[std::strspn(rest_, "/")] == '\0';
    tail_ = *rest_ == '\0' ? "" : "/";
    if (isDot(part, length)) {
        tail_ = "/.";
        return isFolder();
    }
    if (isDoubleDot(part, length)) {
        if (!isFolder())
            return false;
        leave();
        return true;
    }
    if (length > NAME_MAX)
        return fail(ENAMETOOLONG);
    const bool canJump = hasJumps(memory_.path);
    if (!enter(part, length))
        return leaveItToTheKernel();
    if (*rest_ == '\0' && last_ == LastLink::Kept)
        return false;
    const ssize_t count =
        kernel::readLink(AT_FDCWD, placeOnHost(), memory_.target, sizeof(memory_.target));
    if (count >= 0)
        return follow(static_cast<size_t>(count), canJump);
    if (errno == ENAMETOOLONG)
        return leaveItToTheKernel();
    const bool isThere = errno == EINVAL; // and no link
    return isThere || (errno == ENOENT && isLast) || fail(errno);
}

/** Goes on with the target of the link that the walk has come to. */
bool PathWalk::follow(size_t length, bool canJump) {
    if (++links_ > kMostLinks)
        return fail(ELOOP);
    const size_t behind = std::strlen(rest_);
    if (canJump && !isAbsolute(memory_.target)) // a pipe, a socket, ...
        return stop(End::Host);
    if (length == sizeof(memory_.target) || length + behind >= sizeof(memory_.rest))
        return leaveItToTheKernel();
    hasJumped_ = canJump && behind == 0;
    const char *target = memory_.target;
    memory_.target[length] = '\0';
    if (canJump)
        target += rootBefore(target);
    length -= static_cast<size_t>(target - memory_.target);
    std::memmove(memory_.rest + length, rest_, behind + 1);
    std::memcpy(memory_.rest, target, length);
    rest_ = memory_.rest;
    leave();
    if (isAbsolute(memory_.rest)) {
        length_ = 1;
        leave();
    }
    return true;
}

bool PathWalk::enter(const char *part, size_t length) {
    if (length_ + 1 + length >= sizeof(memory_.path))
        return false;
    memory_.path[length_] = '/';
    std::memcpy(memory_.path + length_ + 1, part, length);
    length_ += 1 + length;
    memory_.path[length_] = '\0';
    look();
    return true;
}

void PathWalk::leave() {
    while (length_ > 0 && memory_.path[--length_] != '/') {
    }
    memory_.path[length_] = '\0';
    isHereOnBoard_ = isBoardPath(memory_.path);
}

/**
 * How much of a path that the kernel tells leads to the board's files: it knows nothing of the
 * paths that they have on the board. 0 for all other files.
 */
size_t PathWalk::rootBefore(const char *path) const {
    const size_t root = std::strlen(board_.rootPath());
    const bool isBelow = std::strncmp(path, board_.rootPath(), root) == 0 && path[root] == '/';
    return isBelow && isBoardPath(path + root) ? root : 0;
}

/** Takes the walked path, which the kernel has told, for what it is on the board. */
void PathWalk::recogniseBoard() {
    const size_t root = rootBefore(memory_.path);
    length_ -= root;
    std::memmove(memory_.path, memory_.path + root, length_ + 1);
    look();
}

void PathWalk::look() {
    isHereOnBoard_ = isBoardPath(memory_.path);
    isOnBoard_ = isOnBoard_ || isHereOnBoard_;
}

/** Where the walked path lies on the host. */
const char *PathWalk::placeOnHost() {
    if (!isHereOnBoard_)
        return length_ == 0 ? "/" : memory_.path;
    stpcpy(stpcpy(memory_.host, board_.rootPath()), memory_.path);
    return memory_.host;
}

/** The same with something behind it. */
const char *PathWalk::placeOnHost(const char *tail) {
    const char *place = placeOnHost();
    const size_t length = std::strlen(place);
    std::memmove(memory_.host, place, length);
    stpcpy(memory_.host + length, tail);
    return memory_.host;
}

/** Whether the walk can leave its place for the folder above: from anything else it cannot. */
bool PathWalk::isFolder() {
    char nothing = '\0';
    if (length_ == 0)
        return true;
    const char *itself = placeOnHost("/.");
    const ssize_t count = kernel::readLink(AT_FDCWD, itself, &nothing, sizeof(nothing));
    return count >= 0 || errno == EINVAL || fail(errno);
}

/**
 * Lets the kernel walk, which alone can where the path of the starting folder is too long to be
 * told or the folder is no longer in its place. It does not know of the board's files; it comes to
 * them by their real paths only.
 */
void PathWalk::askKernel() {
    isOver_ = true;
    const int noFollow = last_ == LastLink::Kept ? O_NOFOLLOW : 0;
    const int fd = kernel::openAt(folder_, given_, O_PATH | noFollow);
    const int error = errno;
    if (fd >= 0) {
        if (pathOfDescriptor(fd)) {
            recogniseBoard();
            arrive();
        }
        kernel::close(fd);
    } else if (error == ENOENT) {
        askKernelForParent();
    } else if (error == EMFILE || error == ENFILE || error == ENOMEM) {
        end_ = End::Unknown;
    }
}

/** The same for a path whose last part is missing. */
void PathWalk::askKernelForParent() {
    char nothing = '\0';
    if (kernel::readLink(folder_, given_, &nothing, sizeof(nothing)) >= 0) {
        end_ = End::Unknown; // a link to something missing
        return;
    }
    char *end = stpcpy(memory_.rest, given_);
    while (end > memory_.rest && end[-1] == '/')
        *--end = '\0';
    char *last = std::strrchr(memory_.rest, '/');
    const char *parent = last == nullptr ? "." : memory_.rest;
    const char *name = last == nullptr ? memory_.rest : last + 1;
    if (last != nullptr)
        *last = '\0';
    const int fd = kernel::openAt(folder_, parent, O_PATH | O_DIRECTORY);
    if (fd < 0)
        return;
    if (pathOfDescriptor(fd)) {
        if (enter(name, std::strlen(name))) {
            recogniseBoard();
            arrive();
        } else {
            end_ = End::Unknown;
        }
    }
    kernel::close(fd);
}

void PathWalk::arrive() {
    if (!isOnBoard_) {
        const char *root = board_.rootPath();
        isInFolder_ = std::strncmp(memory_.path, root, std::strlen(root)) == 0;
        return;
    }
    end_ = isHereOnBoard_ ? End::Board : End::Beyond;
    if (hasJumped_)
        return; // the kernel jumps as well, even where the file has no path any more
    hostPath_ = placeOnHost(tail_);
}

/** A path that is too long to be walked here; the kernel finds its way through the host only. */
bool PathWalk::leaveItToTheKernel() {
    if (isOnBoard_)
        return stop(End::Unknown);
    askKernel();
    return false;
}

/** The walk ends with an error. On the host the kernel finds it itself. */
bool PathWalk::fail(int error) {
    error_ = error;
    return stop(isOnBoard_ && !hasJumped_ ? End::Nowhere : End::Host);
}

bool PathWalk::stop(End end) {
    isOver_ = true;
    end_ = end;
    return false;
}

} // namespace vb
