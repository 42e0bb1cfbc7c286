// Requests of the library pass iodbg as they do in the program, in tests that are linked with
// --wrap=ioctl.

#include "iodbg/core/library_calls.h"

#include <cstdarg>

extern "C" {
int realIoctl(int fd, unsigned long request, ...) __asm__("__real_ioctl");
int wrappedIoctl(int fd, unsigned long request, ...) __asm__("__wrap_ioctl");

/** As the program has it. */
int wrappedIoctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    const int result = realIoctl(fd, request, argument);
    if (result >= 0)
        iodbg::tellOfRequest(request, argument);
    return result;
}
}
