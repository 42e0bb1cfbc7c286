#include "virtual_board/board/poe_link.h"

#include "virtual_board/board/circuits.h"

namespace vb {

namespace {

/** What the rules have for a frame, which they know by its command code. */
PoeFrameFault faultOfFrame(Board &board, uint8_t command) {
    PoeFrameFault fault;
    const FaultRule *rule =
        faultFor(board.faults, {FaultDevice::Poe, FaultOp::Write, 0, 0, 0, command});
    if (rule == nullptr)
        return fault;
    fault.isIgnored = rule->effect == FaultEffect::NoAnswer;
    fault.hasWrongEcho = rule->effect == FaultEffect::WrongEcho;
    fault.hasWrongChecksum = rule->effect == FaultEffect::WrongChecksum;
    fault.hasPowerLoss = rule->effect == FaultEffect::PowerLoss;
    fault.hasNoEffect = rule->effect == FaultEffect::NoEffect;
    if (rule->effect == FaultEffect::LateAnswer)
        fault.latePolls = static_cast<uint8_t>(rule->argument - 1);
    if (rule->effect == FaultEffect::BadPort)
        fault.badPort = static_cast<uint32_t>(rule->argument);
    return fault;
}

bool writeFrame(Board &board, const uint8_t *data, uint32_t length, uint64_t nowNs) {
    return poeWrite(board.devices.poe, data, length, faultOfFrame(board, data[0]), nowNs);
}

} // namespace

bool poeTransfer(Board &board, const I2cTransfer &transfer) {
    if (!isPoePresent(board))
        return false;
    if (transfer.offsetLen != 0) {
        // Offset bytes are the start of a frame to this device, and never those of a good one.
        const auto start = static_cast<uint8_t>(transfer.offset);
        if (!writeFrame(board, &start, 1, transfer.nowNs) || !transfer.isRead)
            return false;
    }
    return transfer.isRead
               ? poeRead(board.devices.poe, transfer.data, transfer.length, transfer.nowNs)
               : writeFrame(board, transfer.data, transfer.length, transfer.nowNs);
}

} // namespace vb
