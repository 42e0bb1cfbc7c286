// Requests to the drivers of the flash partitions: reads, writes, and what is asked with ioctl.

#include "tracer/flash_requests.h"

#include "tracer/device_files.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/next.h"

#include <cerrno>
#include <cstddef>
#include <mtd/mtd-abi.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

namespace tracer {

namespace {

template <typename Blocks>
void takeErase(const void *argument, TraceRecord &trace) {
    Blocks blocks = {};
    if (!vb::copyFromUser(&blocks, argument, sizeof(blocks)))
        return;
    trace.offset = static_cast<uint32_t>(blocks.start);
    trace.length = static_cast<uint32_t>(blocks.length);
    trace.value = trace.error == 0 ? trace.length : 0;
}

void takeBlock(const void *argument, TraceRecord &trace) {
    int64_t offset = 0;
    if (vb::copyFromUser(&offset, argument, sizeof(offset)))
        trace.offset = static_cast<uint32_t>(offset);
}

} // namespace

void recordFlashRequest(TraceRecord trace, uint8_t partition, unsigned long code,
                        const void *argument, int result, int error) {
    trace.devAddr = partition;
    trace.error = error;
    switch (code) {
    case MEMGETINFO:
        trace.kind = TraceKind::MtdInfo;
        break;
    case MEMERASE:
        trace.kind = TraceKind::MtdErase;
        takeErase<erase_info_user>(argument, trace);
        break;
    case MEMERASE64:
        trace.kind = TraceKind::MtdErase;
        takeErase<erase_info_user64>(argument, trace);
        break;
    case MEMGETBADBLOCK:
        trace.kind = TraceKind::MtdIsBad;
        takeBlock(argument, trace);
        trace.value = result > 0 ? 1 : 0;
        break;
    case MEMSETBADBLOCK:
        trace.kind = TraceKind::MtdMarkBad;
        takeBlock(argument, trace);
        break;
    default:
        trace.kind = TraceKind::MtdOther;
        trace.offset = static_cast<uint32_t>(code);
        break;
    }
    record(trace);
}

} // namespace tracer

namespace {

using tracer::Device;
using tracer::DeviceFound;
using tracer::TraceKind;
using tracer::TraceRecord;

DeviceFound flashOf(int fd) {
    if (!tracer::isRecording() || !tracer::mayHaveFlash())
        return {};
    const DeviceFound found = tracer::deviceOf(fd);
    return found.device == Device::Flash ? found : DeviceFound{};
}

off64_t positionOf(int fd) {
    const int savedErrno = errno;
    const off64_t position = lseek64(fd, 0, SEEK_CUR);
    errno = savedErrno;
    return position;
}

/** Transfers with the C library's function, and records it. */
template <typename Transfer>
ssize_t transferred(TraceKind kind, const DeviceFound &found, off64_t offset, size_t length,
                    Transfer transfer) {
    TraceRecord trace = tracer::begun(kind);
    const ssize_t count = transfer();
    const int savedErrno = errno;
    trace.devAddr = found.partition;
    trace.offset = static_cast<uint32_t>(offset);
    trace.length = static_cast<uint32_t>(length);
    trace.value = count > 0 ? static_cast<uint32_t>(count) : 0;
    trace.error = count < 0 ? savedErrno : 0;
    tracer::record(trace);
    errno = savedErrno;
    return count;
}

} // namespace

#define TRACE_TRANSFER(symbol, kind, position, call, ...)                                          \
    VB_SEAM(ssize_t, symbol, __VA_ARGS__) {                                                        \
        const DeviceFound found = flashOf(fd);                                                     \
        const auto next = [=] { return VB_NEXT(symbol) call; };                                    \
        return found.device == Device::None                                                        \
                   ? next()                                                                        \
                   : transferred(TraceKind::kind, found, position, length, next);                  \
    }
TRACE_TRANSFER(read, MtdRead, positionOf(fd), (fd, data, length), int fd, void *data, size_t length)
TRACE_TRANSFER(__read_chk, MtdRead, positionOf(fd), (fd, data, length, size), int fd, void *data,
               size_t length, size_t size)
TRACE_TRANSFER(write, MtdWrite, positionOf(fd), (fd, data, length), int fd, const void *data,
               size_t length)
TRACE_TRANSFER(pread, MtdRead, offset, (fd, data, length, offset), int fd, void *data,
               size_t length, off_t offset)
TRACE_TRANSFER(pread64, MtdRead, offset, (fd, data, length, offset), int fd, void *data,
               size_t length, off64_t offset)
TRACE_TRANSFER(__pread_chk, MtdRead, offset, (fd, data, length, offset, size), int fd, void *data,
               size_t length, off_t offset, size_t size)
TRACE_TRANSFER(__pread64_chk, MtdRead, offset, (fd, data, length, offset, size), int fd, void *data,
               size_t length, off64_t offset, size_t size)
TRACE_TRANSFER(pwrite, MtdWrite, offset, (fd, data, length, offset), int fd, const void *data,
               size_t length, off_t offset)
TRACE_TRANSFER(pwrite64, MtdWrite, offset, (fd, data, length, offset), int fd, const void *data,
               size_t length, off64_t offset)
