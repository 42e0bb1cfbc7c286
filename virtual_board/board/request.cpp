#include "virtual_board/board/request.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/i2c_bus.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/devices/byte_order.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace vb {

namespace {

constexpr uint32_t kFloating = 0xFFFF; // what an undriven 16-bit bus reads
constexpr uint32_t kMaxTransfer = 4096;
constexpr uint32_t kHighestDevAddr = 0x7F;

/** Stores an answer where a slot says; the result word of the request. */
int32_t storeWord(uint64_t slot, uint32_t value) {
    return copyToUser(userMemory(slot), &value, sizeof(value)) ? 0 : -EFAULT;
}

/** Single-byte corruption of data on its way; bytes outside the data stay what they are. */
void corrupt(const FaultRule &fault, uint8_t *data, uint32_t length) {
    const auto index = static_cast<uint32_t>(fault.argument);
    if (index < length)
        data[index] = static_cast<uint8_t>(data[index] ^ fault.mask);
}

uint32_t corruptRegister(const FaultRule &fault, uint32_t value) {
    uint8_t bytes[2] = {};
    storeBe16(bytes, static_cast<uint16_t>(value));
    corrupt(fault, bytes, sizeof(bytes));
    return loadBe16(bytes);
}

// Each server answers the request's result word.

int32_t serveCpldRead(Request &request) {
    uint16_t content = 0;
    if (!cpldRead(request.board.devices.cpld, slotWord(request.record, 0), &content))
        return -EINVAL;
    uint32_t value = request.has(FaultEffect::NoAnswer) ? kFloating : content;
    if (request.has(FaultEffect::Corrupt))
        value = corruptRegister(*request.fault, value);
    request.trace.value = value;
    return storeWord(request.record.slot[1], value);
}

int32_t serveCpldWrite(Request &request) {
    const uint32_t reg = slotWord(request.record, 0);
    uint32_t value = slotWord(request.record, 1);
    if (reg >= kCpldRegisters || value > 0xFFFF)
        return -EINVAL;
    if (request.has(FaultEffect::Corrupt))
        value = corruptRegister(*request.fault, value);
    if (request.has(FaultEffect::NoAnswer))
        return 0;
    Cpld &cpld = request.board.devices.cpld;
    const uint16_t before = cpld.reg[reg];
    cpldWrite(cpld, reg, static_cast<uint16_t>(value));
    request.trace.length = value ^ cpld.reg[reg];
    registerWritten(request.board, reg, before, request.trace.timeNs);
    return 0;
}

/** How the caller describes the programming, in words of the board's 32-bit processor. */
struct ProgrammingBlock {
    uint32_t word0, word4;
    uint8_t byte8, unused[3];
    uint32_t word12, lineTable, word20;
    uint32_t lines[4];
};

/** Whether a block describes this board's CPLD: other lines are other chips'. */
bool isForThisCpld(const ProgrammingBlock &block, const void *memory) {
    constexpr uint32_t kLines[] = {9, 8, 10, 11};
    const auto address = static_cast<const char *>(memory) + offsetof(ProgrammingBlock, lines);
    return block.word0 == 1 && block.byte8 == 1 && block.word12 == 5500 && block.word20 == 0 &&
           block.lineTable == static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address)) &&
           std::equal(std::begin(kLines), std::end(kLines), block.lines);
}

int32_t serveCpldUpgrade(Request &request) {
    const void *memory = userMemory(request.record.slot[0]);
    ProgrammingBlock block;
    if (!copyFromUser(&block, memory, sizeof(block)))
        return -EFAULT;
    if (request.file.error != 0)
        return -request.file.error;
    if (!isForThisCpld(block, memory) || request.file.size == 0)
        return -EINVAL;
    if (request.has(FaultEffect::NoAnswer))
        return -EIO;
    CpldLogic &logic = request.board.devices.cpld.logic;
    ++logic.programmings;
    logic.size = request.file.size;
    logic.crc = request.file.crc;
    return 0;
}

int32_t serveI2c(Request &request, bool isRead) {
    const BspIoctlRecord &record = request.record;
    const auto length = static_cast<int32_t>(slotWord(record, 5));
    auto *memory = static_cast<uint8_t *>(userMemory(record.slot[4]));
    if (memory == nullptr)
        return -EFAULT;
    if (length < 1 || static_cast<uint32_t>(length) > kMaxTransfer ||
        slotWord(record, 1) > kHighestDevAddr)
        return -EINVAL;
    if (request.has(FaultEffect::NoAnswer))
        return -ENXIO;

    // The data crosses the driver's own buffer, where a fault can spoil it without touching the
    // caller's bytes of a write. One at a time works on a board, maybe on a small stack.
    static uint8_t data[kMaxTransfer];
    auto count = static_cast<uint32_t>(length);
    if (request.has(FaultEffect::Short))
        count = std::min(count, static_cast<uint32_t>(request.fault->argument));
    if (!isRead && !copyFromUser(data, memory, count))
        return -EFAULT;
    if (!isRead && request.has(FaultEffect::Corrupt))
        corrupt(*request.fault, data, count);
    const I2cTransfer transfer = {slotWord(record, 0) & 0xFF,
                                  slotWord(record, 0) >> 8 & 0xFF,
                                  slotWord(record, 1),
                                  slotWord(record, 2),
                                  slotWord(record, 3),
                                  isRead,
                                  data,
                                  count,
                                  request.trace.timeNs};
    if (!i2cTransfer(request.board, transfer))
        return -ENXIO;
    if (isRead && request.has(FaultEffect::Corrupt))
        corrupt(*request.fault, data, count);
    if (isRead && !copyToUser(memory, data, count))
        return -EFAULT;
    request.trace.stored = std::min(count, kTraceDataSize);
    std::memcpy(request.trace.data, data, request.trace.stored);
    return 0;
}

int32_t serveGpioInput(Request &request) {
    if (request.has(FaultEffect::NoAnswer))
        return 0;
    return gpioSetInput(request.board.devices.gpio, slotWord(request.record, 0)) ? 0 : -EINVAL;
}

int32_t serveGpioOutput(Request &request) {
    if (request.has(FaultEffect::NoAnswer))
        return 0;
    const uint32_t line = slotWord(request.record, 0);
    const bool level = slotWord(request.record, 1) != 0;
    return gpioSetOutput(request.board.devices.gpio, line, level) ? 0 : -EINVAL;
}

int32_t serveGpioRead(Request &request) {
    uint32_t level = 0;
    if (!gpioRead(request.board.devices.gpio, slotWord(request.record, 0), &level))
        return -EINVAL;
    if (request.has(FaultEffect::NoAnswer))
        level = 1; // the pull-up
    request.trace.value = level;
    return storeWord(request.record.slot[1], level);
}

} // namespace

void *userMemory(uint64_t slot) {
    constexpr uint64_t kLowestUserAddress = 4096;
    constexpr uint64_t kExtension = 0xFFFFFFFF00000000;
    // No process lives in the top 4 GiB of 64 bits: such an address is a sign-extended 32-bit one.
    const uint64_t address = (slot & kExtension) == kExtension ? slot & ~kExtension : slot;
    if (address < kLowestUserAddress)
        return nullptr;
    return reinterpret_cast<void *>(static_cast<uintptr_t>(address));
}

int32_t serveDevice(Request &request) {
    switch (request.trace.kind) {
    case TraceKind::CpldRead:
        return serveCpldRead(request);
    case TraceKind::CpldWrite:
        return serveCpldWrite(request);
    case TraceKind::I2cRead:
        return serveI2c(request, true);
    case TraceKind::I2cWrite:
        return serveI2c(request, false);
    case TraceKind::GpioInput:
        return serveGpioInput(request);
    case TraceKind::GpioOutput:
        return serveGpioOutput(request);
    case TraceKind::GpioRead:
        return serveGpioRead(request);
    case TraceKind::CpldUpgrade:
        return serveCpldUpgrade(request);
    default:
        return -ENOTTY;
    }
}

} // namespace vb
