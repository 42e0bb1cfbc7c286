#include "iodbg/core/library_calls.h"

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>
#include <utility>

namespace iodbg {

namespace {

CommandWatcher commandWatcher;
WriteWatcher writeWatcher;

/** What a watcher writes itself is not told to it. */
void tellOfWrite(size_t bytes) {
    const WriteWatcher watcher = std::exchange(writeWatcher, nullptr);
    watcher(bytes);
    writeWatcher = watcher;
}

} // namespace

CommandWatch::CommandWatch(CommandWatcher watcher) {
    commandWatcher = std::move(watcher);
}

CommandWatch::~CommandWatch() {
    commandWatcher = nullptr;
}

WriteWatch::WriteWatch(WriteWatcher watcher) {
    writeWatcher = std::move(watcher);
}

WriteWatch::~WriteWatch() {
    writeWatcher = nullptr;
}

} // namespace iodbg

// A program's own functions come before the C library's. The calls go on unchanged.

extern "C" int system(const char *command) {
    using System = int (*)(const char *);
    static const auto next = reinterpret_cast<System>(dlsym(RTLD_NEXT, "system"));
    if (iodbg::commandWatcher && command != nullptr)
        iodbg::commandWatcher(command);
    return next(command);
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" ssize_t write(int fd, const void *data, size_t length) {
    using Write = ssize_t (*)(int, const void *, size_t);
    static const auto next = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
    const ssize_t count = next(fd, data, length);
    if (iodbg::writeWatcher)
        iodbg::tellOfWrite(length);
    return count;
}
