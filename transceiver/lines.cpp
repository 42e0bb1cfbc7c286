// The low-speed lines of the SFP cages, which the CPLD collects.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "kernel/reported_registers.h"
#include "support/register_bits.h"

namespace {

constexpr uint32_t kPortsPerRegister = 16;
constexpr uint32_t kFirstUplinkBit = 6; // presence and transmitter disable

/** The registers of one kind of line. */
struct Line {
    uint32_t frontRegister; // of front ports 1 to 16
    uint32_t uplinkRegister;
    bool isStatus; // has the model's bit for status lines
};

constexpr Line kPresent = {19, 8, false};
constexpr Line kTxDisable = {25, 12, false};
constexpr Line kRxLos = {16, 8, true};
constexpr Line kTxFault = {22, 12, true};

/** Where a cage's line is. A bit outside the register belongs to a port without a cage. */
struct LinePlace {
    uint32_t reg;
    int64_t bit;
};

LinePlace placeOf(const Line &line, uint32_t port, const bsp::CageLines &cages) {
    if (port >= 1 && port <= cages.frontPorts)
        return {line.frontRegister + (port - 1) / kPortsPerRegister,
                (port - 1) % kPortsPerRegister};
    if (port < cages.uplinksFrom || port > cages.uplinksTo)
        return {0, 0}; // no cage, and no port is refused
    const uint32_t firstBit = line.isStatus ? cages.uplinkStatusBit : kFirstUplinkBit;
    return {line.uplinkRegister, int64_t{port} - cages.firstUplink + firstBit};
}

/** Finds a line and reads its register. */
int32_t readLine(const Line &line, uint32_t port, LinePlace *place, uint16_t *reg,
                 bsp::CallSite site = bsp::CallSite::here()) {
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    *place = placeOf(line, port, bsp::boardModel(devId).cageLines);
    return bsp::readRegister(place->reg, reg, site);
}

/** Stores what a line's level means. */
int32_t readLevel(const Line &line, uint32_t port, uint32_t whenClear, uint32_t whenSet,
                  uint32_t *out, bsp::CallSite site = bsp::CallSite::here()) {
    LinePlace place{};
    uint16_t reg = 0;
    if (const int32_t status = readLine(line, port, &place, &reg, site); status != BSP_OK)
        return status;
    *out = bsp::hasBit(reg, place.bit) ? whenSet : whenClear;
    return BSP_OK;
}

} // namespace

int32_t bspLaserPresentGet(uint32_t port, uint32_t *out) {
    return readLevel(kPresent, port, BSP_LASER_MISSING, BSP_LASER_PRESENT, out);
}

int32_t bspLaserControlSet(uint32_t port, uint32_t state) {
    LinePlace place{};
    uint16_t reg = 0;
    if (const int32_t status = readLine(kTxDisable, port, &place, &reg); status != BSP_OK)
        return status;
    const uint32_t disable = state == BSP_LASER_ON ? 0 : 1;
    return bsp::writeRegister(place.reg, bsp::withField(reg, place.bit, 1, disable));
}

int32_t bspLaserControlGet(uint32_t port, uint32_t *out) {
    return readLevel(kTxDisable, port, BSP_LASER_ON, BSP_LASER_OFF, out);
}

int32_t bspLaserRxLosGet(uint32_t port, uint32_t *out) {
    return readLevel(kRxLos, port, BSP_LASER_SIGNAL_GOOD, BSP_LASER_SIGNAL_LOST, out);
}

int32_t bspLaserTxfaultGet(uint32_t port, uint32_t *out) {
    return readLevel(kTxFault, port, BSP_LASER_FAULT_NONE, BSP_LASER_FAULT, out);
}
