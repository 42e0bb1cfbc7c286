#include "virtual_board/board/driver.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/request.h"
#include "virtual_board/board/user_memory.h"

#include <algorithm>
#include <cerrno>

namespace vb {

namespace {

struct RequestType {
    TraceKind kind;
    FaultDevice device;
    FaultOp op;
};

/** What kind of request a code is; OtherRequest for codes that the module does not serve. */
RequestType typeOf(uint32_t code) {
    switch (code) {
    case BSP_REQ_CPLD_READ:
        return {TraceKind::CpldRead, FaultDevice::Cpld, FaultOp::Read};
    case BSP_REQ_CPLD_WRITE:
        return {TraceKind::CpldWrite, FaultDevice::Cpld, FaultOp::Write};
    case BSP_REQ_I2C_READ:
        return {TraceKind::I2cRead, FaultDevice::I2c, FaultOp::Read};
    case BSP_REQ_I2C_WRITE:
        return {TraceKind::I2cWrite, FaultDevice::I2c, FaultOp::Write};
    case BSP_REQ_GPIO_INPUT:
        return {TraceKind::GpioInput, FaultDevice::Gpio, FaultOp::Write};
    case BSP_REQ_GPIO_OUTPUT:
        return {TraceKind::GpioOutput, FaultDevice::Gpio, FaultOp::Write};
    case BSP_REQ_GPIO_READ:
        return {TraceKind::GpioRead, FaultDevice::Gpio, FaultOp::Read};
    case BSP_REQ_CPLD_UPGRADE:
        return {TraceKind::CpldUpgrade, FaultDevice::Cpld, FaultOp::Upgrade};
    default:
        return {TraceKind::OtherRequest, FaultDevice::Cpld, FaultOp::Any};
    }
}

FaultSubject subjectOf(const RequestType &type, const BspIoctlRecord &record) {
    if (type.op == FaultOp::Upgrade)
        return {type.device, type.op, 0, 0, 0, UINT32_MAX}; // concerns no register
    if (type.device != FaultDevice::I2c)
        return {type.device, type.op, 0, 0, 0, slotWord(record, 0)};
    return {type.device,
            type.op,
            slotWord(record, 0) & 0xFF,
            slotWord(record, 0) >> 8 & 0xFF,
            slotWord(record, 1),
            slotWord(record, 2)};
}

void describe(TraceRecord &trace, const FaultSubject &subject, const BspIoctlRecord &record) {
    trace.bus = static_cast<uint8_t>(subject.bus);
    trace.channel = static_cast<uint8_t>(subject.channel);
    trace.devAddr = static_cast<uint8_t>(subject.devAddr);
    trace.offset = subject.offset;
    if (subject.device == FaultDevice::I2c) {
        trace.value = slotWord(record, 3);
        trace.length = slotWord(record, 5);
    }
    if (trace.kind == TraceKind::CpldWrite)
        trace.value = slotWord(record, 1);
    if (trace.kind == TraceKind::GpioOutput)
        trace.value = slotWord(record, 1) != 0 ? 1 : 0;
}

} // namespace

bool needsFile(uint32_t code) {
    return code == BSP_REQ_CPLD_UPGRADE;
}

int copyFileName(const BspIoctlRecord &record, char (&name)[kMaxFileName]) {
    const uint32_t length = slotWord(record, 2);
    if (length >= kMaxFileName)
        return EINVAL;
    name[length] = '\0';
    return copyFromUser(name, userMemory(record.slot[1]), length) ? 0 : EFAULT;
}

int serveRequest(Board &board, const Sender &sender, uint32_t code, BspIoctlRecord &record,
                 const FileFound &file) {
    const RequestType type = typeOf(code);
    const FaultSubject subject = subjectOf(type, record);
    TraceRecord &trace = traceNext(board.trace, type.kind, sender);
    describe(trace, subject, record);
    if (needsFile(code)) {
        trace.value = file.size;
        const uint32_t shown = std::min(slotWord(record, 2), kTraceDataSize - 1);
        copyFromUser(trace.data, userMemory(record.slot[1]), shown);
    }
    if (type.kind == TraceKind::OtherRequest) {
        trace.offset = code;
        trace.error = ENOTTY;
        return trace.error;
    }

    Request request = {board, record, trace, faultFor(board.faults, subject), file};
    if (request.has(FaultEffect::IoctlFails)) {
        trace.error = request.fault->argument;
        return trace.error;
    }
    advanceBoard(board, sender.nowNs);
    record.result =
        request.has(FaultEffect::Refuse) ? request.fault->argument : serveDevice(request);
    advanceBoard(board, sender.nowNs);
    trace.result = record.result;
    return 0;
}

} // namespace vb
