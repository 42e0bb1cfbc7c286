// Calls of the library's that pass through here, since a program's own functions come before the C
// library's. They go on unchanged. Only the program has them: what else is made of its commands has
// the calls of its own.

#include "iodbg/core/library_calls.h"

#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/ioctl.h>
#include <unistd.h>

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    using Ioctl = int (*)(int, unsigned long, ...);
    static const auto next = reinterpret_cast<Ioctl>(dlsym(RTLD_NEXT, "ioctl"));
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    const int result = next(fd, request, argument);
    if (result >= 0)
        iodbg::tellOfRequest(request, argument);
    return result;
}

extern "C" int system(const char *command) {
    using System = int (*)(const char *);
    static const auto next = reinterpret_cast<System>(dlsym(RTLD_NEXT, "system"));
    iodbg::tellOfCommand(command);
    return next(command);
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" ssize_t write(int fd, const void *data, size_t length) {
    using Write = ssize_t (*)(int, const void *, size_t);
    static const auto next = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
    const ssize_t count = next(fd, data, length);
    iodbg::tellOfWrite(length);
    return count;
}
