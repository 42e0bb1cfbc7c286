#include "virtual_board/board/circuits.h"

#include "virtual_board/board/climate_lines.h"
#include "virtual_board/board/sfp_cages.h"

#include <utility>

namespace vb {

namespace {

constexpr uint16_t kPtpMask = 1u << kPtpTrigger.bit;

/** Whether a fault keeps the PoE controller in reset although its line is released. */
bool isStuckInReset(Board &board) {
    const FaultRule *fault = faultFor(board.faults, {FaultDevice::Poe, FaultOp::Reset});
    return fault != nullptr && fault->effect == FaultEffect::NoAnswer;
}

void followResetLine(Board &board, uint64_t nowNs) {
    PoeController &poe = board.devices.poe;
    const bool isHeld = !gpioLevel(board.devices.gpio, kPoeResetGpio);
    if (poe.isFitted == 0 || isHeld == (poe.isHeldInReset != 0))
        return;
    poeSetReset(poe, isHeld, !isHeld && isStuckInReset(board), nowNs);
}

/** Whether a supply is as a line tells of it. */
bool holds(const Supply &supply, SupplyTells what) {
    const bool isPlugged = supply.isPresent != 0;
    const bool isInputGood = isPlugged && supply.pmbus.hasInputFailed == 0;
    switch (what) {
    case SupplyTells::Never:
        return false;
    case SupplyTells::Plugged:
        return isPlugged;
    case SupplyTells::Unplugged:
        return !isPlugged;
    case SupplyTells::InputGood:
        return isInputGood;
    case SupplyTells::InputFailed:
        return isPlugged && !isInputGood;
    case SupplyTells::OutputGood:
        return isInputGood && supply.pmbus.hasOutputFailed == 0;
    }
    return false;
}

/** The power comes back. */
void switchOn(Board &board, uint64_t nowNs) {
    clockPowerCycle(board.devices.clockChip, nowNs);
    startSfpModules(board, nowNs);
}

} // namespace

void advanceBoard(Board &board, uint64_t nowNs) {
    Devices &devices = board.devices;
    const uint64_t expiry = watchdogExpiry(devices.watchdog, devices.cpld.reg[kCpldWatchdog]);
    if (nowNs >= expiry)
        resetBoard(board, ResetReason::Watchdog, expiry);
    watchdogLine(devices.watchdog, gpioLevel(devices.gpio, kWatchdogGpio), nowNs);
    followResetLine(board, nowNs);
    if (devices.poe.isFitted != 0)
        poeAdvance(devices.poe, nowNs);
    advanceClimate(board, nowNs);
    clockAdvance(devices.clockChip, nowNs);
    driveSfpLines(board, nowNs);
}

void registerWritten(Board &board, uint32_t reg, uint16_t before, uint64_t nowNs) {
    const uint16_t content = board.devices.cpld.reg[reg];
    if (reg == kCpldWatchdog)
        board.devices.watchdog.fedNs = nowNs;
    if (reg == kCpldReset && content == 0)
        resetBoard(board, ResetReason::Register, nowNs);
    if (reg == kCpldControl && (content & ~before & kPtpMask) != 0)
        ++board.devices.ptpPulses;
}

void resetBoard(Board &board, ResetReason reason, uint64_t nowNs) {
    Devices &devices = board.devices;
    advanceClimate(board, nowNs); // with the fans' level until now
    if (reason == ResetReason::PowerOn)
        switchOn(board, nowNs);
    const Model *model = findModel(board.header.devId);
    cpldReset(devices.cpld, model != nullptr ? model->poePorts : 0);
    gpioReset(devices.gpio);
    const bool isHeld = !gpioLevel(devices.gpio, kPoeResetGpio);
    if (devices.poe.isFitted != 0)
        poeSetReset(devices.poe, isHeld, !isHeld && isStuckInReset(board), nowNs);
    driveAllLines(board, nowNs);
    devices.watchdog.lineLevel = gpioLevel(devices.gpio, kWatchdogGpio) ? 1 : 0;
    ++devices.resets;
    devices.lastReset = reason;
}

void driveAllLines(Board &board, uint64_t nowNs) {
    drivePoeLine(board);
    for (uint32_t index = 0; index < kSupplies; ++index)
        driveSupplyLines(board, index);
    startClimateLines(board);
    startSfpLines(board, nowNs);
}

void drivePoeLine(Board &board) {
    const PoeController &poe = board.devices.poe;
    cpldDrive(board.devices.cpld, kPoeAbsence, poe.isFitted == 0 || poe.isMissing != 0);
}

void driveSupplyLines(Board &board, uint32_t index) {
    const Model *model = findModel(board.header.devId);
    if (model == nullptr || index >= model->supplies.count)
        return;
    const Supply &supply = board.devices.supply[index];
    const SupplyWiring &wiring = model->supplies;
    const std::pair<CpldLine, SupplyTells> lines[] = {
        {kSupplyPresence, wiring.presence}, {kSupplyType, wiring.type},
        {kSupplyStatus0, wiring.status[0]}, {kSupplyStatus1, wiring.status[1]},
        {kSupplyStatus2, wiring.status[2]},
    };
    for (const auto &[line, what] : lines)
        cpldDrive(board.devices.cpld, nthLine(line, index + 1), holds(supply, what));
}

bool isPoePresent(const Board &board) {
    return board.devices.poe.isFitted != 0 && !cpldLevel(board.devices.cpld, kPoeAbsence);
}

} // namespace vb
