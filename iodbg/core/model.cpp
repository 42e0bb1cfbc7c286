#include "iodbg/core/model.h"

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "support/board_map.h"

namespace iodbg {

namespace {

void addCages(std::vector<uint32_t> &cages, const bsp::CageRange &range) {
    for (uint32_t i = 0; i < range.ports; ++i)
        cages.push_back(range.firstPort + i);
}

FanPresence presenceOf(const bsp::Fans &fans) {
    if (fans.presenceRegister == 0)
        return FanPresence::Unknown;
    return fans.presenceRegister == bsp::kSupplyPresence.reg ? FanPresence::SuppliesLine
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
    model.hasSupplyLines = row.supplies.count != 0;
    model.hasSupplyReadings = row.supplies.haveBus;
    model.poePorts = row.poePorts;
    model.poeChip = row.poeChip;
    model.fans = row.fans.count;
    model.fanPresence = presenceOf(row.fans);
    model.fansShareTachometer = !row.fans.haveOwnTachometers;
    model.hasClock = row.hasClock;
    addCages(model.cages, row.frontCages);
    addCages(model.cages, row.uplinkCages);
    if (!row.haveUplinkStatusLines)
        model.firstCageWithoutStatus = row.uplinkCages.firstPort;
    return BSP_OK;
}

} // namespace iodbg
