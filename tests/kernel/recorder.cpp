#include "tests/kernel/recorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

Recorder recorder;

uint64_t Recorder::unit(size_t offset) const {
    uint64_t value = 0;
    std::memcpy(&value, record.data() + offset, sizeof(value));
    return value;
}

void dirtyStack() {
    constexpr size_t kDeep = 8192;
    volatile uint8_t ground[kDeep];
    for (volatile uint8_t &byte : ground)
        byte = 0xFF;
}

namespace {

bool isOfLibrary(const char *path) {
    return std::strcmp(path, "/dev/bspHandle") == 0 || std::strcmp(path, "/tmp/bsp/devId") == 0;
}

std::string accessOf(int flags, mode_t mode) {
    std::string text = (flags & O_ACCMODE) == O_RDONLY ? " read-only"
                       : (flags & O_ACCMODE) == O_RDWR ? " read-write"
                                                       : " write-only";
    char octal[16] = "";
    if ((flags & O_CREAT) != 0)
        std::snprintf(octal, sizeof(octal), " create %04o", static_cast<unsigned>(mode));
    text += octal;
    if ((flags & O_NOFOLLOW) != 0)
        text += " no-link";
    // Nothing else may be asked for: no truncation, no appending.
    constexpr int kExpected = O_ACCMODE | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_LARGEFILE;
    return text + ((flags & ~kExpected) != 0 ? " with other flags" : "");
}

int recordOpen(const char *path, int flags, mode_t mode) {
    if (!isOfLibrary(path))
        return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
    recorder.calls.push_back(std::string("open ") + path + accessOf(flags, mode));
    return recorder.openResult;
}

} // namespace

#define RECORD_OPEN(symbol)                                                                        \
    extern "C" int symbol(const char *path, int flags, ...) {                                      \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;                \
        va_end(arguments);                                                                         \
        return recordOpen(path, flags, mode);                                                      \
    }
RECORD_OPEN(open)
RECORD_OPEN(open64)

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    auto *argument = va_arg(arguments, BspIoctlRecord *);
    va_end(arguments);
    if (fd != recorder.openResult)
        return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));

    char call[32];
    std::snprintf(call, sizeof(call), "ioctl %#lx", request);
    recorder.calls.emplace_back(call);
    std::memcpy(recorder.record.data(), argument, kRecordSize);
    recorder.driver(*argument);
    return recorder.ioctlResult;
}

extern "C" int close(int fd) {
    if (fd != recorder.openResult)
        return static_cast<int>(syscall(SYS_close, fd));
    recorder.calls.emplace_back("close");
    return 0;
}
