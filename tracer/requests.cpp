// ioctl, and the mapping of the registers' page.

#include "tracer/device_files.h"
#include "tracer/driver_requests.h"
#include "tracer/flash_requests.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/os/next.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <sys/mman.h>
#include <sys/types.h>

namespace {

using tracer::Device;
using tracer::DeviceFound;
using tracer::TraceKind;
using tracer::TraceRecord;

/** Asks with the C library's function, and records it where it is a device of the board's. */
template <typename Ask>
int asked(int fd, unsigned long code, const void *argument, Ask ask) {
    if (!tracer::isRecording())
        return ask();
    const DeviceFound found = tracer::deviceOf(fd);
    if (found.device != Device::Driver && found.device != Device::Flash)
        return ask();
    const TraceRecord trace = tracer::begun(TraceKind::OtherRequest);
    const int result = ask();
    const int savedErrno = errno;
    const int error = result < 0 ? savedErrno : 0;
    if (found.device == Device::Driver)
        tracer::recordDriverRequest(trace, code, argument, error);
    else
        tracer::recordFlashRequest(trace, found.partition, code, argument, result, error);
    errno = savedErrno;
    return result;
}

/** What passes by way of a mapped page nobody can see: the mapping alone is told. */
template <typename Map>
void *mapped(int fd, size_t length, off64_t offset, Map map) {
    if (fd < 0 || !tracer::isRecording() || tracer::deviceOf(fd).device != Device::Memory)
        return map();
    TraceRecord trace = tracer::begun(TraceKind::Map);
    void *address = map();
    const int savedErrno = errno;
    trace.offset = static_cast<uint32_t>(offset);
    trace.length = static_cast<uint32_t>(length);
    trace.error = address == MAP_FAILED ? savedErrno : 0;
    tracer::setPath(trace, vb::kMemoryPath);
    tracer::record(trace);
    errno = savedErrno;
    return address;
}

void *nextArgument(va_list arguments) {
    return va_arg(arguments, void *);
}

} // namespace

#define TRACE_IOCTL(symbol)                                                                        \
    VB_SEAM(int, symbol, int fd, unsigned long code, ...) {                                        \
        va_list arguments;                                                                         \
        va_start(arguments, code);                                                                 \
        void *argument = nextArgument(arguments);                                                  \
        va_end(arguments);                                                                         \
        return asked(fd, code, argument, [=] { return VB_NEXT(symbol)(fd, code, argument); });     \
    }
TRACE_IOCTL(ioctl)
TRACE_IOCTL(__ioctl_time64) // the name of ioctl on 32-bit systems with 64-bit time

#define TRACE_MMAP(symbol, offsetType)                                                             \
    VB_SEAM(void *, symbol, void *address, size_t length, int protection, int flags, int fd,       \
            offsetType offset) {                                                                   \
        return mapped(fd, length, offset, [=] {                                                    \
            return VB_NEXT(symbol)(address, length, protection, flags, fd, offset);                \
        });                                                                                        \
    }
TRACE_MMAP(mmap, off_t)
TRACE_MMAP(mmap64, off64_t)
