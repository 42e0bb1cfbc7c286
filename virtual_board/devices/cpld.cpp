#include "virtual_board/devices/cpld.h"

namespace vb {

namespace {

constexpr uint16_t kControlInputs = kCpldPoeAbsent | 0x0600; // and two supplies

/** Bits of a register that are lines into the CPLD. */
uint16_t inputsOf(uint32_t reg) {
    if (reg == kCpldControl)
        return kControlInputs;
    const bool isInput = reg == kCpldDeviceId || reg == kCpldVersion || reg == kCpldSupplies;
    return isInput ? 0xFFFF : 0;
}

bool isWiredToLogic(uint32_t reg) {
    return reg == kCpldDeviceId || reg == kCpldVersion;
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
    case kCpldSupplies:
        return "supplies";
    default:
        return nullptr;
    }
}

} // namespace vb
