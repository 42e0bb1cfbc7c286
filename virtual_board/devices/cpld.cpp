#include "virtual_board/devices/cpld.h"

namespace vb {

namespace {

/** A row of registers in which the same bits are inputs. */
struct InputRow {
    uint32_t first, last;
    uint16_t bits;
};

/** Neighbouring lines, from the first on. */
constexpr uint16_t linesFrom(const CpldLine &first, uint32_t count) {
    return static_cast<uint16_t>(((1u << count) - 1) << first.bit);
}

constexpr uint32_t kRecordedSupplies = 2;
constexpr uint32_t kUplinks = kUplinkTransmitDisable.bit - kUplinkTransmitFault.bit;

constexpr InputRow kInputs[] = {
    {kCpldDeviceId, kCpldVersion, 0xFFFF}, // wired to the logic
    {kCpldControl, kCpldControl,
     linesFrom(kPoeAbsence, 1) | linesFrom(kRecordedSupplyAbsence, kRecordedSupplies)},
    {kCpldUplinkInputs, kCpldUplinkInputs, 0xFFFF},
    {kCpldUplinkTransmitters, kCpldUplinkTransmitters, linesFrom(kUplinkTransmitFault, kUplinks)},
    {kCpldSfpReceiveLoss, kCpldSfpTransmitDisable - 1, 0xFFFF}, // loss, presence and fault
    {kCpldFanSpeeds, kCpldFanSpeeds + 1, 0xFFFF},
    {kCpldSupplies, kCpldSupplies, 0xFFFF},
    {kCpldFans, kCpldFans, 0xFFFF},
};

bool isWiredToLogic(uint32_t reg) {
    return reg == kCpldDeviceId || reg == kCpldVersion;
}

/** The LED lines of PoE ports that a register has. */
uint16_t poeLamps(uint32_t reg, uint32_t poePorts) {
    const uint32_t before = (reg - kCpldPoeLamps) * kCpldLinesPerRegister;
    if (reg < kCpldPoeLamps || before >= poePorts)
        return 0;
    const uint32_t count = poePorts - before;
    return static_cast<uint16_t>(count >= kCpldLinesPerRegister ? 0xFFFFu : (1u << count) - 1);
}

} // namespace

bool isPoeLampLit(const Cpld &cpld, uint32_t port) {
    const uint32_t bit = port - 1;
    return (cpld.reg[kCpldPoeLamps + bit / kCpldLinesPerRegister] >> bit % kCpldLinesPerRegister &
            1) == 0;
}

bool cpldRead(const Cpld &cpld, uint32_t reg, uint16_t *value) {
    if (reg >= kCpldRegisters)
        return false;
    *value = cpld.reg[reg];
    return true;
}

bool cpldWrite(Cpld &cpld, uint32_t reg, uint16_t value) {
    if (reg >= kCpldRegisters)
        return false;
    const uint16_t inputs = cpldInputs(reg);
    cpld.reg[reg] = static_cast<uint16_t>((cpld.reg[reg] & inputs) | (value & ~inputs));
    return true;
}

bool cpldLevel(const Cpld &cpld, const CpldLine &line) {
    return (cpld.reg[line.reg] >> line.bit & 1) != 0;
}

void cpldDrive(Cpld &cpld, const CpldLine &line, bool level) {
    uint16_t &lines = cpld.reg[line.reg];
    const auto mask = static_cast<uint16_t>(1u << line.bit);
    lines = static_cast<uint16_t>(level ? lines | mask : lines & ~mask);
}

uint16_t cpldInputs(uint32_t reg) {
    for (const InputRow &row : kInputs) {
        if (reg >= row.first && reg <= row.last)
            return row.bits;
    }
    return 0;
}

void cpldReset(Cpld &cpld, uint32_t poePorts) {
    for (uint32_t reg = 0; reg < kCpldRegisters; ++reg) {
        if (!isWiredToLogic(reg))
            cpld.reg[reg] = poeLamps(reg, poePorts);
    }
}

} // namespace vb
