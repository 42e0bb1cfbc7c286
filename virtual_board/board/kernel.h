#pragma once
// The kernel asked directly, past every definition that stands before the C library's: what the
// board's own code does to the host is no business of the program that it works in. None of these
// is a point where a thread can be cancelled.

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <endian.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace vb::kernel {

/** The C library's way to the kernel, past a seam's that stands before it. */
using Door = long (*)(long number, ...);
Door door();

/** A system call, as the C library's syscall. */
template <typename... Arguments>
long call(long number, Arguments... arguments) {
    return door()(number, arguments...);
}

#ifndef O_LARGEFILE
constexpr int kLargeFile = 0;
#else
constexpr int kLargeFile = O_LARGEFILE;
#endif

inline int openAt(int folder, const char *path, int flags) {
    return static_cast<int>(call(SYS_openat, folder, path, flags | O_CLOEXEC | kLargeFile, 0));
}

inline int open(const char *path, int flags) {
    return openAt(AT_FDCWD, path, flags);
}

/**
 * Opens a file that the board's own work needs, which no program notices: one that has as many
 * files open as it may reaches its devices, too. The caller keeps the process's other threads away.
 */
inline int openBeyondLimit(int folder, const char *path, int flags) {
    const int fd = openAt(folder, path, flags);
    rlimit64 before = {};
    if (fd >= 0 || errno != EMFILE || call(SYS_prlimit64, 0, RLIMIT_NOFILE, nullptr, &before) != 0)
        return fd;
    const rlimit64 raised = {before.rlim_max, before.rlim_max};
    call(SYS_prlimit64, 0, RLIMIT_NOFILE, &raised, nullptr);
    const int opened = openAt(folder, path, flags);
    const int error = errno;
    call(SYS_prlimit64, 0, RLIMIT_NOFILE, &before, nullptr);
    errno = error;
    return opened;
}

inline void close(int fd) {
    call(SYS_close, fd);
}

/** Gives a descriptor a number that programs do not expect to get; it keeps its own where it
 * cannot. */
inline int moveUp(int fd) {
    constexpr int kAboveUsual = 512;
    const auto moved = static_cast<int>(call(SYS_fcntl, fd, F_DUPFD_CLOEXEC, kAboveUsual));
    if (moved < 0)
        return fd;
    close(fd);
    return moved;
}

inline ssize_t read(int fd, void *data, size_t length) {
    return call(SYS_read, fd, data, length);
}

inline ssize_t write(int fd, const void *data, size_t length) {
    return call(SYS_write, fd, data, length);
}

// At a position; of the two halves that all systems want it in the upper is always 0.

inline ssize_t readAt(int fd, void *data, size_t length, uint32_t offset) {
    const iovec part = {data, length};
    return call(SYS_preadv, fd, &part, 1, static_cast<unsigned long>(offset), 0ul);
}

inline ssize_t writeAt(int fd, const void *data, size_t length, uint32_t offset) {
    const iovec part = {const_cast<void *>(data), length};
    return call(SYS_pwritev, fd, &part, 1, static_cast<unsigned long>(offset), 0ul);
}

/** Where in a file something is, as SEEK_DATA and SEEK_END find it; -1 where there is nothing. */
inline int64_t seek(int fd, uint32_t offset, int whence) {
#if __SIZEOF_LONG__ == 8
    return call(SYS_lseek, fd, long{offset}, whence);
#else
    int64_t found = 0;
    return call(SYS__llseek, fd, 0ul, offset, &found, whence) == 0 ? found : -1;
#endif
}

/** Makes a part of a file a hole; false where there are none. */
inline bool punchHole(int fd, uint32_t offset, uint32_t length) {
    constexpr int kMode = FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE;
#if __SIZEOF_LONG__ == 8
    return call(SYS_fallocate, fd, kMode, long{offset}, long{length}) == 0;
#else
    return call(SYS_fallocate, fd, kMode, __LONG_LONG_PAIR(0, offset),
                __LONG_LONG_PAIR(0, length)) == 0;
#endif
}

/** The target of a link, without a zero behind it. */
inline ssize_t readLink(int folder, const char *path, char *target, size_t size) {
    return call(SYS_readlinkat, folder, path, target, size);
}

/**
 * Whether a path is all in memory that can be read. To know it the kernel has only to copy the
 * path, since nothing can be made under an empty name.
 */
inline bool isReadable(const char *path) {
    return call(SYS_symlinkat, path, -1, "") == 0 || errno != EFAULT;
}

/** The path of the working folder with its zero; its length with it, or -1. */
inline ssize_t workingFolder(char *path, size_t size) {
    return call(SYS_getcwd, path, size);
}

/** What tells a file from every other. */
struct Identity {
    uint64_t device = 0;
    uint64_t inode = 0; // 0: of no file

    bool isKnown() const { return inode != 0; }
    bool operator==(const Identity &other) const = default;
};

/** The identity of an open file, or with a path of the file there; unknown when there is none. */
inline Identity identityOf(int fd, const char *path = "") {
    struct statx info = {};
    if (call(SYS_statx, fd, path, AT_EMPTY_PATH, STATX_INO, &info) != 0)
        return {};
    return {uint64_t{info.stx_dev_major} << 32 | info.stx_dev_minor, info.stx_ino};
}

/** Wakes all threads, of all processes, that wait for a word of shared memory to change. */
inline void wakeWaiters(const uint32_t *word) {
    call(SYS_futex, word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

/**
 * Waits until a word of shared memory is no longer what it was, at most so long; UINT64_MAX: for
 * ever. 0 when somebody has woken this thread, else the errno.
 */
inline int waitForChange(const uint32_t *word, uint32_t before, uint64_t timeoutNs) {
    constexpr uint64_t kNsPerSecond = 1000000000;
    const struct { // as this call wants it on every system
        long seconds, ns;
    } timeout = {static_cast<long>(std::min<uint64_t>(timeoutNs / kNsPerSecond, INT32_MAX)),
                 static_cast<long>(timeoutNs % kNsPerSecond)};
    const bool isForEver = timeoutNs == UINT64_MAX;
    return call(SYS_futex, word, FUTEX_WAIT, before, isForEver ? nullptr : &timeout, nullptr, 0) ==
                   0
               ? 0
               : errno;
}

/** What a clock of the host's shows. */
inline uint64_t clockNow(clockid_t clock) {
#ifdef SYS_clock_gettime64
    struct {
        int64_t seconds, ns;
    } now = {};
    call(SYS_clock_gettime64, clock, &now);
#else
    struct {
        long seconds, ns;
    } now = {};
    call(SYS_clock_gettime, clock, &now);
#endif
    constexpr uint64_t kNsPerSecond = 1000000000;
    return static_cast<uint64_t>(now.seconds) * kNsPerSecond + static_cast<uint64_t>(now.ns);
}

inline bool isProcess(int32_t pid) {
    return call(SYS_kill, pid, 0) == 0 || errno != ESRCH;
}

/** Whether a descriptor is of a timer. */
inline bool isTimer(int fd) {
    int64_t setting[4];
#ifdef SYS_timerfd_gettime64
    return call(SYS_timerfd_gettime64, fd, setting) == 0;
#else
    return call(SYS_timerfd_gettime, fd, setting) == 0;
#endif
}

/** Whether reads and writes of a descriptor block. */
inline bool blocks(int fd) {
    const long flags = call(SYS_fcntl, fd, F_GETFL, 0);
    return flags >= 0 && (flags & O_NONBLOCK) == 0;
}

inline int32_t threadId() {
    return static_cast<int32_t>(call(SYS_gettid));
}

struct Owner {
    uint32_t user, group;
};

/** Whose a file is; root's when nobody can tell. */
inline Owner ownerOf(const char *path) {
    struct statx info = {};
    call(SYS_statx, AT_FDCWD, path, 0, STATX_UID | STATX_GID, &info);
    return {info.stx_uid, info.stx_gid};
}

inline void changeOwner(const char *path, const Owner &owner) {
    call(SYS_fchownat, AT_FDCWD, path, owner.user, owner.group, AT_SYMLINK_NOFOLLOW);
}

} // namespace vb::kernel
