// The low-speed lines of the SFP cages, which the CPLD collects.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "kernel/reported_registers.h"
#include "support/board_map.h"
#include "support/register_bits.h"

namespace {

/** Where one kind of line is. */
struct Line {
    uint32_t frontRegister;         // of front ports 1 to 16
    bsp::CpldLine uplink;           // of the first one
    uint32_t bitWithoutStatusLines; // of the first uplink, on models that have no lines for status
};

constexpr Line kPresent = {bsp::kCpldSfpPresence, bsp::kUplinkPresence, bsp::kUplinkPresence.bit};
constexpr Line kTxDisable = {bsp::kCpldSfpTransmitDisable, bsp::kUplinkTransmitDisable,
                             bsp::kUplinkTransmitDisable.bit};
constexpr Line kRxLos = {bsp::kCpldSfpReceiveLoss, bsp::kUplinkReceiveLoss,
                         bsp::kUplinkPresence.bit};
constexpr Line kTxFault = {bsp::kCpldSfpTransmitFault, bsp::kUplinkTransmitFault,
                           bsp::kUplinkTransmitDisable.bit};

/** Where a cage's line is. A bit outside the register belongs to a port without a cage. */
struct LinePlace {
    uint32_t reg;
    int64_t bit;
};

/** Whether a port has no lines: no port is refused, and register 0 is read for it. Where the only
 * cages are uplinks all ports count as such. */
bool isWithoutLines(const bsp::BoardModel &model, uint32_t port) {
    const bsp::CageRange &uplinks = model.uplinkCages;
    const uint32_t behind = uint32_t{uplinks.firstPort} + uplinks.ports;
    return (model.frontCages.ports != 0 && port < uplinks.firstPort) ||
           (!model.havePortsBehindUplinks && port >= behind);
}

LinePlace placeOf(const Line &line, uint32_t port, const bsp::BoardModel &model) {
    const uint32_t front = port - 1; // no port 0: it is far behind the last
    if (front < model.frontCages.ports)
        return {line.frontRegister + front / bsp::kCpldLinesPerRegister,
                front % bsp::kCpldLinesPerRegister};
    if (isWithoutLines(model, port))
        return {0, 0};
    const uint32_t firstBit =
        model.haveUplinkStatusLines ? line.uplink.bit : line.bitWithoutStatusLines;
    return {line.uplink.reg, int64_t{port} - model.uplinkCages.firstPort + firstBit};
}

/** Finds a line and reads its register. */
int32_t readLine(const Line &line, uint32_t port, LinePlace *place, uint16_t *reg,
                 bsp::CallSite site = bsp::CallSite::here()) {
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    *place = placeOf(line, port, bsp::boardModel(devId));
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
