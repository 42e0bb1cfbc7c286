// Requests to the kernel module.

#include "tracer/driver_requests.h"

#include "bsp.h"
#include "virtual_board/board/user_memory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace tracer {

namespace {

uint32_t word(const BspIoctlRecord &record, int slot) {
    return static_cast<uint32_t>(record.slot[slot]);
}

/** What a slot points to, in this program's memory. */
const void *memoryAt(uint64_t slot) {
    return reinterpret_cast<const void *>(static_cast<uintptr_t>(slot));
}

TraceKind kindOf(uint32_t code) {
    switch (code) {
    case BSP_REQ_CPLD_READ:
        return TraceKind::CpldRead;
    case BSP_REQ_CPLD_WRITE:
        return TraceKind::CpldWrite;
    case BSP_REQ_I2C_READ:
        return TraceKind::I2cRead;
    case BSP_REQ_I2C_WRITE:
        return TraceKind::I2cWrite;
    case BSP_REQ_GPIO_INPUT:
        return TraceKind::GpioInput;
    case BSP_REQ_GPIO_OUTPUT:
        return TraceKind::GpioOutput;
    case BSP_REQ_GPIO_READ:
        return TraceKind::GpioRead;
    case BSP_REQ_CPLD_UPGRADE:
        return TraceKind::CpldUpgrade;
    default:
        return TraceKind::OtherRequest;
    }
}

/** What was read, which the kernel module has stored there. */
void takeValue(const BspIoctlRecord &record, TraceRecord &trace) {
    if (trace.result == 0)
        vb::copyFromUser(&trace.value, memoryAt(record.slot[1]), sizeof(trace.value));
}

void takeTransfer(const BspIoctlRecord &record, TraceRecord &trace) {
    trace.bus = static_cast<uint8_t>(word(record, 0));
    trace.channel = static_cast<uint8_t>(word(record, 0) >> 8);
    trace.devAddr = static_cast<uint8_t>(word(record, 1));
    trace.offset = word(record, 2);
    trace.value = word(record, 3);
    trace.length = word(record, 5);
    const uint32_t kept = std::min(trace.length, language::kTraceDataSize);
    if (trace.result == 0 && trace.error == 0 &&
        vb::copyFromUser(trace.data, memoryAt(record.slot[4]), kept))
        trace.stored = kept;
}

void takeFile(const BspIoctlRecord &record, TraceRecord &trace) {
    const uint32_t length = std::min(word(record, 2), language::kTraceDataSize - 1);
    vb::copyFromUser(trace.data, memoryAt(record.slot[1]), length);
    struct stat64 info = {};
    if (stat64(reinterpret_cast<const char *>(trace.data), &info) == 0)
        trace.value = static_cast<uint32_t>(info.st_size);
}

void takeDetails(const BspIoctlRecord &record, TraceRecord &trace) {
    switch (trace.kind) {
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite:
        takeTransfer(record, trace);
        break;
    case TraceKind::CpldUpgrade:
        takeFile(record, trace);
        break;
    case TraceKind::CpldRead:
    case TraceKind::GpioRead:
        trace.offset = word(record, 0);
        takeValue(record, trace);
        break;
    case TraceKind::CpldWrite:
        trace.offset = word(record, 0);
        trace.value = word(record, 1);
        break;
    case TraceKind::GpioOutput:
        trace.offset = word(record, 0);
        trace.value = word(record, 1) != 0 ? 1 : 0;
        break;
    default:
        trace.offset = word(record, 0);
        break;
    }
}

} // namespace

void recordDriverRequest(TraceRecord trace, unsigned long code, const void *argument, int error) {
    BspIoctlRecord record = {};
    const int savedErrno = errno;
    trace.kind = kindOf(static_cast<uint32_t>(code));
    trace.error = error;
    // A wrong address is an error of the request, and no fault of the program.
    if (trace.kind == TraceKind::OtherRequest) {
        trace.offset = static_cast<uint32_t>(code);
    } else if (vb::copyFromUser(&record, argument, sizeof(record))) {
        trace.result = error == 0 ? record.result : 0;
        takeDetails(record, trace);
    }
    tracer::record(trace);
    errno = savedErrno;
}

} // namespace tracer
