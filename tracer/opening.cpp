// Opens of the board's devices and files. Those of the driver's node are told when they fail only:
// each request opens it.

#include "tracer/device_files.h"
#include "tracer/recorder.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/os/next.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/types.h>

namespace {

using tracer::TraceKind;
using tracer::TraceRecord;

/** The descriptor by which a file is open; of streams none is needed. */
int descriptorOf(int fd) {
    return fd;
}
int descriptorOf(const FILE *) {
    return -1;
}

void note(TraceRecord trace, const char *path, int fd, int error) {
    char tidy[tracer::kLongestPath];
    if (error == EFAULT || path == nullptr || !tracer::isOfBoard(path, tidy))
        return;
    if (error == 0 &&
        std::strncmp(tidy, vb::kFlashNodePrefix, sizeof(vb::kFlashNodePrefix) - 1) == 0)
        tracer::expectFlash();
    if (error == 0 && std::strcmp(tidy, vb::kNodePath) == 0) {
        tracer::expectDriver(fd);
        return;
    }
    trace.error = error;
    tracer::setPath(trace, tidy);
    tracer::record(trace);
}

/** Opens with the C library's function, and records it. */
template <typename Result, typename Open>
Result opened(const char *path, Result failed, Open open) {
    if (!tracer::isRecording())
        return open();
    const TraceRecord trace = tracer::begun(TraceKind::Open);
    const Result result = open();
    const int savedErrno = errno;
    note(trace, path, descriptorOf(result), result == failed ? savedErrno : 0);
    errno = savedErrno;
    return result;
}

/** The mode behind the flags of an open that may create its file. */
mode_t modeArgument(int flags, va_list arguments) {
    constexpr int kTemporary = O_TMPFILE & ~O_DIRECTORY;
    return (flags & (O_CREAT | kTemporary)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#define TRACE_OPEN(symbol)                                                                         \
    VB_SEAM(int, symbol, const char *path, int flags, ...) {                                       \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return opened(path, -1, [=] { return VB_NEXT(symbol)(path, flags, mode); });               \
    }
TRACE_OPEN(open)
TRACE_OPEN(open64)

#define TRACE_OPENAT(symbol)                                                                       \
    VB_SEAM(int, symbol, int folder, const char *path, int flags, ...) {                           \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return opened(path, -1, [=] { return VB_NEXT(symbol)(folder, path, flags, mode); });       \
    }
TRACE_OPENAT(openat)
TRACE_OPENAT(openat64)

// What builds with source fortification call instead of the above.
#define TRACE_OPEN_2(symbol)                                                                       \
    VB_SEAM(int, symbol, const char *path, int flags) {                                            \
        return opened(path, -1, [=] { return VB_NEXT(symbol)(path, flags); });                     \
    }
TRACE_OPEN_2(__open_2)
TRACE_OPEN_2(__open64_2)

#define TRACE_OPENAT_2(symbol)                                                                     \
    VB_SEAM(int, symbol, int folder, const char *path, int flags) {                                \
        return opened(path, -1, [=] { return VB_NEXT(symbol)(folder, path, flags); });             \
    }
TRACE_OPENAT_2(__openat_2)
TRACE_OPENAT_2(__openat64_2)

#define TRACE_CREAT(symbol)                                                                        \
    VB_SEAM(int, symbol, const char *path, mode_t mode) {                                          \
        return opened(path, -1, [=] { return VB_NEXT(symbol)(path, mode); });                      \
    }
TRACE_CREAT(creat)
TRACE_CREAT(creat64)

#define TRACE_FOPEN(symbol)                                                                        \
    VB_SEAM(FILE *, symbol, const char *path, const char *mode) {                                  \
        return opened(path, static_cast<FILE *>(nullptr),                                          \
                      [=] { return VB_NEXT(symbol)(path, mode); });                                \
    }
TRACE_FOPEN(fopen)
TRACE_FOPEN(fopen64)
