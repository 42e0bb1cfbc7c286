#include "virtual_board/devices/cpld.h"

namespace vb {

namespace {

constexpr uint16_t kControlInputs = kCpldPoeAbsent | 0x0600; // and two supplies
constexpr uint16_t kFanPresenceInput = 0x0100;
constexpr uint16_t kUplinkInputs = 0x0FFF;
constexpr uint16_t kUplinkFaultInputs = 0x003F;

bool isWiredToLogic(uint32_t reg) {
    return reg == kCpldDeviceId || reg == kCpldVersion;
}

/** Bits of a register that are lines into the CPLD. */
uint16_t inputsOf(uint32_t reg) {
    if (reg == kCpldControl)
        return kControlInputs;
    if (reg == kCpldFanPresence)
        return kFanPresenceInput;
    if (reg == kCpldUplinkInputs)
        return kUplinkInputs;
    if (reg == kCpldUplinkTransmit)
        return kUplinkFaultInputs;
    if (reg >= kCpldSfpLoss && reg < kCpldSfpDisable)
        return 0xFFFF;
    const bool isInput = isWiredToLogic(reg) || reg == kCpldFanCounts ||
                         reg == kCpldFanCounts + 1 || reg == kCpldSupplies;
    return isInput ? 0xFFFF : 0;
}

} // namespace

bool cpldRead(const Cpld &cpld, uint32_t reg, uint16_t *value) {
    if (reg >= kCpldRegisters)
        return false;
    *value = cpld.reg[reg];
    return true;
}

bool cpldWrite(Cpld &cpld, uint32_t reg, uint16_t value) {
    if (reg >= kCpldRegisters)
        return false;
    if (!isWiredToLogic(reg))
        cpld.reg[reg] = value;
    return true;
}

void cpldReset(Cpld &cpld) {
    for (uint32_t reg = 0; reg < kCpldRegisters; ++reg)
        cpld.reg[reg] &= inputsOf(reg);
}

const char *cpldRegisterName(uint32_t reg) {
    switch (reg) {
    case kCpldDeviceId:
        return "device id";
    case kCpldVersion:
        return "version";
    case kCpldWatchdog:
        return "watchdog";
    case kCpldReset:
        return "reset";
    case kCpldControl:
        return "control";
    case kCpldLamps:
        return "lamps";
    case kCpldPoeLamps:
    case kCpldPoeLamps + 1:
    case kCpldPoeLamps + 2:
        return "PoE lamps";
    case kCpldFanCounts:
    case kCpldFanCounts + 1:
        return "fan speeds";
    case kCpldSupplies:
        return "supplies";
    case kCpldFanPresence:
        return "fans";
    case kCpldUplinkInputs:
        return "uplink inputs";
    case kCpldUplinkTransmit:
        return "uplink transmitters";
    case kCpldSfpLoss:
    case kCpldSfpLoss + 1:
    case kCpldSfpLoss + 2:
        return "SFP receive loss";
    case kCpldSfpPresent:
    case kCpldSfpPresent + 1:
    case kCpldSfpPresent + 2:
        return "SFP presence";
    case kCpldSfpFault:
    case kCpldSfpFault + 1:
    case kCpldSfpFault + 2:
        return "SFP transmit fault";
    case kCpldSfpDisable:
    case kCpldSfpDisable + 1:
    case kCpldSfpDisable + 2:
        return "SFP transmit disable";
    default:
        return nullptr;
    }
}

} // namespace vb
