#include "virtual_board/devices/cpld.h"

namespace vb {

namespace {

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

const char *cpldRegisterName(uint32_t reg) {
    switch (reg) {
    case kCpldDeviceId:
        return "device id";
    case kCpldVersion:
        return "version";
    case kCpldControl:
        return "control";
    default:
        return nullptr;
    }
}

} // namespace vb
