// Requests that are sent to a board without a program.

#include "bsp.h"
#include "language/refused.h"
#include "language/trace_json.h"
#include "language/trace_names.h"
#include "language/trace_reader.h"
#include "language/trace_replay.h"
#include "virtual_board/board/driver.h"
#include "virtual_board/board/mtd.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/json.h"

#include <algorithm>
#include <cerrno>
#include <mtd/mtd-abi.h>
#include <optional>
#include <sys/ioctl.h>

namespace vboard {

namespace {

using vb::TraceKind;
using vb::TraceRecord;

constexpr uint32_t kMostTransferred = 4096; // of I2C; the driver refuses more

uint64_t slotOf(const void *address) {
    return reinterpret_cast<uintptr_t>(address);
}

/** The memory that a program would give for a request. */
struct CallersMemory {
    uint32_t word = 0;
    std::vector<uint8_t> data;
};

/** The record that a program would send, and its code. */
uint32_t makeRequest(const TraceRecord &request, CallersMemory &memory, BspIoctlRecord &record) {
    record.slot[0] = request.offset;
    switch (request.kind) {
    case TraceKind::CpldRead:
    case TraceKind::GpioRead:
        record.slot[1] = slotOf(&memory.word);
        return request.kind == TraceKind::CpldRead ? BSP_REQ_CPLD_READ : BSP_REQ_GPIO_READ;
    case TraceKind::CpldWrite:
    case TraceKind::GpioOutput:
        record.slot[1] = request.value;
        return request.kind == TraceKind::CpldWrite ? BSP_REQ_CPLD_WRITE : BSP_REQ_GPIO_OUTPUT;
    case TraceKind::GpioInput:
        return BSP_REQ_GPIO_INPUT;
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite: {
        const auto length = std::min(request.length, kMostTransferred);
        memory.data.assign(request.data, request.data + request.stored);
        memory.data.resize(std::max(length, 1u));
        const uint64_t slots[] = {uint64_t{request.bus} | uint64_t{request.channel} << 8,
                                  request.devAddr,
                                  request.offset,
                                  request.value,
                                  slotOf(memory.data.data()),
                                  request.length};
        std::copy(std::begin(slots), std::end(slots), record.slot);
        return request.kind == TraceKind::I2cRead ? BSP_REQ_I2C_READ : BSP_REQ_I2C_WRITE;
    }
    default:
        return request.offset; // a code that the driver does not know
    }
}

void sendToDriver(vb::Board &board, const vb::Sender &sender, const TraceRecord &request) {
    CallersMemory memory;
    BspIoctlRecord record = {};
    const uint32_t code = makeRequest(request, memory, record);
    vb::serveRequest(board, sender, code, record);
}

/** An erase that takes its time is over at once: those who send requests one by one do not wait. */
bool passNoTime(void *, uint64_t) {
    return true;
}

uint32_t partitionOf(const TraceRecord &request) {
    const auto *place =
        std::find(std::begin(vb::kFlashNumbers), std::end(vb::kFlashNumbers), request.devAddr);
    if (place == std::end(vb::kFlashNumbers))
        throw language::Refused("partition: a board has no mtd" + std::to_string(request.devAddr));
    return static_cast<uint32_t>(place - vb::kFlashNumbers);
}

/** The number of a request without its size and direction, which machines put elsewhere. */
constexpr uint32_t numberOf(uint32_t code) {
    return code & 0xFFFF;
}

void sendToPartition(const vb::BoardFolder &folder, const vb::Sender &sender,
                     const TraceRecord &request) {
    const vb::MtdRequest to = {folder, sender, partitionOf(request), {nullptr, passNoTime}};
    const uint32_t size = folder.board()->devices.flash[to.index].geometry.size;
    switch (request.kind) {
    case TraceKind::MtdRead: {
        std::vector<uint8_t> data(std::min(request.length, size));
        vb::mtdRead(to, request.offset, data.data(), data.size());
        break;
    }
    case TraceKind::MtdErase:
        vb::mtdErase(to, true, request.offset, request.length);
        break;
    case TraceKind::MtdInfo:
        vb::mtdInfo(to);
        break;
    case TraceKind::MtdIsBad:
        vb::mtdIsBad(to, request.offset);
        break;
    case TraceKind::MtdMarkBad:
        vb::mtdMarkBad(to, true, request.offset);
        break;
    default:
        if (numberOf(request.offset) == numberOf(ECCGETSTATS))
            vb::mtdStatistics(to, request.offset);
        else
            vb::mtdOther(to, request.offset);
        break;
    }
}

/** A command to the MDIO controller, as one that a program polls. */
void sendToMdio(vb::Board &board, const vb::Sender &sender, const TraceRecord &request) {
    vb::Mdio &mdio = board.devices.mdio;
    const uint32_t underWay = mdio.command;
    const uint32_t pollsLeft = mdio.pollsLeft;
    const bool isWrite = request.kind == TraceKind::MdioWrite;
    uint32_t content = vb::kMdioStart | (isWrite ? vb::kMdioWrite | request.value << 12 : 0) |
                       (request.devAddr & 0x1Fu) << 2 | (request.offset & 0x1Fu) << 7;
    const vb::MdioDone done = vb::mdioFinish(mdio, content);
    mdio.command = underWay;
    mdio.pollsLeft = pollsLeft;
    TraceRecord &trace = vb::traceNext(board.trace, request.kind, sender);
    trace.devAddr = request.devAddr;
    trace.offset = request.offset;
    trace.value = done.value;
    trace.error = !done.isDone ? ETIMEDOUT : done.hasFailed ? EIO : 0;
}

void send(const vb::BoardFolder &folder, const vb::Sender &sender, const TraceRecord &request) {
    if (request.kind < TraceKind::Open)
        sendToDriver(*folder.board(), sender, request);
    else if (request.kind == TraceKind::MdioRead || request.kind == TraceKind::MdioWrite)
        sendToMdio(*folder.board(), sender, request);
    else
        sendToPartition(folder, sender, request);
}

std::string answerTo(const vb::BoardFolder &folder, const TraceRecord &request) {
    const LockedBoard board(folder);
    const vb::Sender sender = {request.pid, board.bringUpToDate()};
    send(folder, sender, request);
    board.tellOfChange();
    return jsonText(language::traceJson(vb::traceAt(board->trace, board->trace.total - 1)));
}

} // namespace

} // namespace vboard

int32_t vboardSend(VBoard *board, const char *request, char **answer, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(request, "request");
        vboard::require(answer, "answer");
        const vb::TraceRecord record = language::readTraceLine(request);
        if (const language::NotSent reason = language::notSent(record);
            reason != language::NotSent::Sent)
            throw language::Refused(std::string("a request of the kind '") +
                                    language::kindName(record.kind) +
                                    "' cannot be sent: " + language::notSentText(reason));
        *answer = vboard::giveText(vboard::answerTo(board->folder, record));
    });
}
