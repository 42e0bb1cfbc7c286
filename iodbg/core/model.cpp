#include "iodbg/core/model.h"

#include "bsp.h"
#include "identity/board_catalogue.h"

namespace iodbg {

namespace {

void addCages(std::vector<uint32_t> &cages, const bsp::CageRange &range) {
    for (uint32_t i = 0; i < range.ports; ++i)
        cages.push_back(range.firstPort + i);
}

FanPresence presenceOf(const bsp::Fans &fans) {
    constexpr uint32_t kSuppliesRegister = 30;
    if (fans.presenceRegister == 0)
        return FanPresence::Unknown;
    return fans.presenceRegister == kSuppliesRegister ? FanPresence::SuppliesLine
                                                      : FanPresence::OwnLine;
}

} // namespace

int32_t readModel(Model &model) {
    uint32_t id = 0;
    const int32_t status = bspDevIdGet(&id);
    if (status != BSP_OK)
        return status;
    const bsp::BoardModel &row = bsp::boardModel(id);
    model.id = id;
    model.isKnown = row.devId == id;
    model.hasSupplyLines = row.chassis != bsp::ChassisClass::Other;
    model.hasSupplyReadings = row.chassis == bsp::ChassisClass::TwoFan;
    model.poePorts = row.poePorts;
    model.fans = row.fans.count;
    model.fanPresence = presenceOf(row.fans);
    model.fansShareTachometer = !row.fans.haveOwnTachometers;
    model.hasClock = row.hasClock;
    addCages(model.cages, row.frontCages);
    addCages(model.cages, row.uplinkCages);
    constexpr uint8_t kPresenceBit = 6; // of the first uplink
    if (row.cageLines.uplinkStatusBit == kPresenceBit)
        model.firstCageWithoutStatus = row.cageLines.firstUplink;
    return BSP_OK;
}

} // namespace iodbg
