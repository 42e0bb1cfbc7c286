#include "virtual_board/board/folder.h"

#include "virtual_board/board/clock_change.h"
#include "virtual_board/board/consistency.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/kernel.h"
#include "virtual_board/board/layouts.h"
#include "virtual_board/board/lock.h"
#include "virtual_board/board/root_links.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace vb {

namespace {

using enum FolderProblem;

/** What a failure comes of. */
struct Cause {
    FolderProblem problem;
    int osError;

    Cause(FolderProblem what, int why = 0) : problem(what), osError(why) {}
};

__attribute__((format(printf, 3, 4))) bool fail(FolderError &error, const Cause &cause,
                                                const char *format, ...) {
    error.problem = cause.problem;
    error.osError = cause.osError;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error.text, sizeof(error.text), format, arguments);
    va_end(arguments);
    return false;
}

constexpr uint32_t swapped(uint32_t value) {
    return value >> 24 | (value >> 8 & 0xFF00) | (value << 8 & 0xFF0000) | value << 24;
}

/** Whether a header is that of a board which this build can map. */
bool checkHeader(const BoardHeader &header, uint64_t fileSize, const char *path,
                 FolderError &error) {
    if (std::memcmp(header.magic, kBoardMagic, sizeof(kBoardMagic)) != 0)
        return fail(error, Damaged,
                    "%s is damaged: %s is not a board's state; create the board again", path,
                    kStateFile);
    if (header.byteOrder == swapped(kBoardByteOrder))
        return fail(error, OtherVersion,
                    "%s was made on a machine of the other byte order; create a board with the "
                    "vboard of this build",
                    path);
    if (header.byteOrder != kBoardByteOrder || header.check != headerCheck(header))
        return fail(error, Damaged,
                    "%s is damaged: the header of %s is inconsistent; create the board again", path,
                    kStateFile);
    if (layoutStepFrom(header.version, header.size) != nullptr)
        return fail(error, OtherVersion,
                    "%s is a board of an earlier version (%u, this build uses %u); take it along "
                    "with: vboard upgrade %s",
                    path, header.version, kBoardVersion, path);
    if (header.version != kBoardVersion || header.size != sizeof(Board))
        return fail(
            error, OtherVersion,
            "%s is a board of another version (%u, this build uses %u); create a board with "
            "the vboard of this build",
            path, header.version, kBoardVersion);
    if (fileSize != header.size)
        return fail(error, Damaged,
                    "%s is damaged: %s has %llu of %u bytes; create the board again", path,
                    kStateFile, static_cast<unsigned long long>(fileSize), header.size);
    return true;
}

/** Why a path leads to no folder. */
bool failToReach(const char *path, FolderError &error) {
    const int why = errno;
    const char *reason = std::strerror(why);
    if (why == ENOENT)
        return fail(error, {Nothing, ENOENT},
                    "%s: %s; create a board with: vboard create --model 0x0709 %s", path, reason,
                    path);
    if (why == EACCES)
        return fail(
            error, {Permission, EACCES},
            "%s: %s: another user's folder is in the way; have its owner let you in, or use "
            "a board elsewhere",
            path, reason);
    return fail(error, {Nothing, why}, "%s: %s; give the path of a board's folder", path, reason);
}

} // namespace

bool BoardFolder::open(const char *path, FolderError &error) {
    close();
    if (realpath(path, path_) == nullptr)
        return failToReach(path, error);
    std::snprintf(rootPath_, sizeof(rootPath_), "%s/%s", path_, kRootFolder);
    std::snprintf(lockPath_, sizeof(lockPath_), "%s/%s", path_, kLockFile);
    const bool isUsable = map(path, error) && check(path, error) && hasItsFiles(path, error);
    if (!isUsable)
        close();
    return isUsable;
}

/** Why one of the folder's files cannot be opened; it is told by its path from there. */
bool BoardFolder::failToOpen(const char *path, const char *file, FolderError &error) const {
    const int why = errno;
    const char *reason = std::strerror(why);
    if (why == ENOENT)
        return fail(error, Damaged, "%s is damaged: %s is missing; create the board again", path,
                    file);
    if (why == EROFS)
        return fail(error, {Permission, EROFS},
                    "%s: cannot write %s: %s; copy the board to where you may: cp -a %s ...", path,
                    file, reason, path);
    if (why != EACCES && why != EPERM)
        return fail(error, {System, why}, "%s: cannot open %s for reading and writing: %s", path,
                    file, reason);
    if (owner_.user == geteuid())
        return fail(error, {Permission, why},
                    "%s: cannot open %s for reading and writing: %s; give yourself the permission "
                    "with: chmod -R u+rwX %s",
                    path, file, reason, path);
    return fail(error, {Permission, why},
                "%s: cannot open %s for reading and writing: %s; the board is of user id %u: work "
                "as that user, or have it permit you to",
                path, file, reason, owner_.user);
}

/** Whether the files beside the state are there and can be used. */
bool BoardFolder::hasItsFiles(const char *path, FolderError &error) const {
    for (const char *needed : {kNodePath, kMemoryPath, kCommandLinePath, kPartitionListPath}) {
        HostPathBuffer name;
        std::snprintf(name.text, sizeof(name.text), "%s%s", kRootFolder, needed);
        if (access(hostPath(needed).text, R_OK) != 0)
            return failToOpen(path, name.text, error);
    }
    if (!hasFile(path, kRegisterPageFile, kMdioPageSize, error))
        return false;
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        if (!hasFile(path, flashFileName(index).text, board_->devices.flash[index].geometry.size,
                     error))
            return false;
        const HostPathBuffer node = flashNode(index);
        if (access(node.text, R_OK) != 0)
            return failToOpen(path, node.text + std::strlen(path_) + 1, error);
    }
    const HostPathBuffer link = linkOutOfBoard(*this);
    return link.text[0] == '\0' ||
           fail(error, Damaged, "%s cannot be used: the link %s leads out of the board; remove it",
                path, link.text + std::strlen(path_) + 1);
}

bool BoardFolder::hasFile(const char *path, const char *name, uint64_t size,
                          FolderError &error) const {
    const int fd = ::open(ownFile(name).text, O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return failToOpen(path, name, error);
    const off_t found = lseek(fd, 0, SEEK_END);
    ::close(fd);
    if (found >= 0 && static_cast<uint64_t>(found) == size)
        return true;
    return fail(error, Damaged, "%s is damaged: %s is not of the size %llu; create the board again",
                path, name, static_cast<unsigned long long>(size));
}

bool BoardFolder::map(const char *path, FolderError &error) {
    owner_ = kernel::ownerOf(path_);
    const int fd = ::open(ownFile(kStateFile).text, O_RDWR | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT)
        return fail(error, Nothing,
                    "%s is not a board: it has no %s; create one with: vboard create", path,
                    kStateFile);
    if (fd < 0)
        return failToOpen(path, kStateFile, error);

    BoardHeader header = {};
    const ssize_t headerSize = pread(fd, &header, sizeof(header), 0);
    const off_t fileSize = lseek(fd, 0, SEEK_END);
    bool isUsable = false;
    if (headerSize != static_cast<ssize_t>(sizeof(header)))
        fail(error, Damaged, "%s is damaged: %s is too short; create the board again", path,
             kStateFile);
    else
        isUsable = checkHeader(header, static_cast<uint64_t>(fileSize), path, error);
    if (isUsable) {
        void *memory = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (memory != MAP_FAILED)
            board_ = static_cast<Board *>(memory);
        else
            fail(error, {System, errno}, "%s: cannot map %s: %s", path, kStateFile,
                 std::strerror(errno));
    }
    state_ = kernel::identityOf(fd);
    ::close(fd);
    return board_ != nullptr;
}

bool BoardFolder::isGone() const {
    const int folder = kernel::open(path_, O_PATH | O_DIRECTORY);
    if (folder < 0 && (errno == EMFILE || errno == ENFILE || errno == EACCES))
        return false; // it cannot be told, and nothing can be opened on it either
    const bool hasLock = kernel::identityOf(folder, kLockFile).isKnown();
    const kernel::Identity found = kernel::identityOf(folder, kStateFile);
    kernel::close(folder);
    return !hasLock || found != state_;
}

void BoardFolder::tellOfChange() const {
    std::atomic_ref(board_->changes.count).fetch_add(1);
    kernel::wakeWaiters(&board_->changes.count);
}

void BoardFolder::giveToOwner(const char *hostPath) const {
    if (geteuid() == 0 && owner_.user != 0)
        kernel::changeOwner(hostPath, owner_); // what cannot be given stays whose it is
}

/** Judges the state while nobody changes it. */
bool BoardFolder::check(const char *path, FolderError &error) {
    const BoardLock lock(*this, BoardLock::Use::Looks);
    if (!lock.isHeld() && errno == ENOENT)
        return fail(error, Damaged, "%s is damaged: %s is missing; make it anew with: touch %s/%s",
                    path, kLockFile, path_, kLockFile);
    if (!lock.isHeld())
        return failToOpen(path, kLockFile, error);
    if (const char *part = damagedPart(*board_, hostNow()); part != nullptr)
        return fail(error, Damaged,
                    "%s is damaged: %s holds impossible values (%s); create the board again", path,
                    kStateFile, part);
    mendBoard(*board_, hostTime());
    return true;
}

void BoardFolder::close() {
    if (board_ != nullptr)
        munmap(board_, sizeof(Board));
    board_ = nullptr;
}

HostPathBuffer BoardFolder::hostPath(const char *boardPath) const {
    HostPathBuffer path;
    std::snprintf(path.text, sizeof(path.text), "%s%s", rootPath_, boardPath);
    return path;
}

HostPathBuffer BoardFolder::ownFile(const char *name) const {
    HostPathBuffer path;
    std::snprintf(path.text, sizeof(path.text), "%s/%s", path_, name);
    return path;
}

int BoardFolder::openOwnFile(const char *name, int flags) const {
    const int folder = kernel::openBeyondLimit(AT_FDCWD, path_, O_PATH | O_DIRECTORY);
    const int fd = kernel::openBeyondLimit(folder, name, flags);
    kernel::close(folder);
    return fd;
}

HostPathBuffer BoardFolder::flashNode(uint32_t index) const {
    char boardPath[sizeof(kFlashNodePrefix) + 10];
    std::snprintf(boardPath, sizeof(boardPath), "%s%u", kFlashNodePrefix, kFlashNumbers[index]);
    return hostPath(boardPath);
}

uint64_t hostNow() {
    return kernel::clockNow(CLOCK_REALTIME);
}

} // namespace vb
