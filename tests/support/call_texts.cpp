#include "tests/support/call_texts.h"

#include "tests/support/library_holdings.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mtd/mtd-user.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

std::string formatted(const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

std::string accessText(int flags, mode_t mode) {
    std::string text = (flags & O_ACCMODE) == O_RDONLY ? "read-only"
                       : (flags & O_ACCMODE) == O_RDWR ? "read-write"
                                                       : "write-only";
    if ((flags & O_CREAT) != 0)
        text += formatted(" create %04o", static_cast<unsigned>(mode));
    if ((flags & O_SYNC) == O_SYNC)
        text += " sync";
    else if ((flags & O_DSYNC) != 0)
        text += " data-sync";
    if ((flags & O_NOFOLLOW) != 0)
        text += " no-link";
    if ((flags & O_CLOEXEC) == 0)
        text += " inherited";
    // Nothing else may be asked for: no truncation, no appending.
    constexpr int kKnown = O_ACCMODE | O_CREAT | O_SYNC | O_NOFOLLOW | O_CLOEXEC | O_LARGEFILE;
    return text + ((flags & ~kKnown) != 0 ? " and more" : "");
}

std::string ioctlText(int fd, unsigned long request, const void *argument) {
    if (libraryHas.nameOf(fd) == "/dev/bspHandle")
        return formatted("request %#lx", request);
    if (request == MEMGETINFO)
        return "geometry " + libraryHas.nameOf(fd);
    if (request == MEMERASE) {
        const auto *range = static_cast<const erase_info_user *>(argument);
        return "erase " + libraryHas.nameOf(fd) + formatted(" %u+%u", range->start, range->length);
    }
    return formatted("ioctl %#lx ", request) + libraryHas.nameOf(fd);
}

std::string recordLockText(int fd, int command, const struct flock &lock) {
    std::string text = lock.l_type == F_WRLCK   ? "lock "
                       : lock.l_type == F_UNLCK ? "unlock "
                                                : "share ";
    text += libraryHas.nameOf(fd);
    if (command != F_SETLKW)
        text += " without waiting";
    if (lock.l_whence != SEEK_SET || lock.l_start != 0 || lock.l_len != 0)
        text += " in part";
    if (lock.l_pid != -1)
        text += " for a process";
    return text;
}

std::string flockText(int fd, int operation) {
    const std::string words = operation == LOCK_EX   ? "flock "
                              : operation == LOCK_UN ? "unflock "
                                                     : formatted("flock %d ", operation);
    return words + libraryHas.nameOf(fd);
}

std::string seekText(int fd, int64_t offset, int whence) {
    const auto number = static_cast<long long>(offset);
    return "seek " + libraryHas.nameOf(fd) +
           (whence == SEEK_SET                  ? formatted(" %lld", number)
            : whence == SEEK_END && offset == 0 ? " end"
                                                : formatted(" %lld from %d", number, whence));
}

std::string mapText(const void *address, size_t size, int access, int flags, int fd,
                    int64_t offset) {
    return "map " + libraryHas.nameOf(fd) +
           formatted(" %zu at 0x%llx%s%s%s%s", size, static_cast<unsigned long long>(offset),
                     address == nullptr ? "" : " to a place",
                     (access & PROT_READ) != 0 ? " read" : "",
                     (access & PROT_WRITE) != 0 ? " write" : "",
                     flags == MAP_SHARED ? " shared" : " otherwise");
}

std::string clockText(clockid_t clock, const void *time) {
    constexpr bool isBig32 =
        sizeof(long) == 4 && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__; // padded in front
    int64_t seconds = 0;
    int32_t nanoseconds = 0;
    std::memcpy(&seconds, time, sizeof(seconds));
    std::memcpy(&nanoseconds, static_cast<const char *>(time) + (isBig32 ? 12 : 8),
                sizeof(nanoseconds));
    return formatted("set %sclock %lld s %ld ns", clock == CLOCK_REALTIME ? "" : "another ",
                     static_cast<long long>(seconds), static_cast<long>(nanoseconds));
}

std::string transferText(const char *what, int fd, size_t size) {
    return what + (" " + libraryHas.nameOf(fd)) + formatted(" %zu", size);
}
