#include "iodbg/model.h"

#include "bsp.h"
#include "identity/board_catalogue.h"

namespace iodbg {

namespace {

void addCages(std::vector<uint32_t> &cages, const bsp::CageRange &range) {
    for (uint32_t i = 0; i < range.ports; ++i)
        cages.push_back(range.firstPort + i);
}

} // namespace

int32_t readModel(Model &model) {
    uint32_t id = 0;
    const int32_t status = bspDevIdGet(&id);
    if (status != BSP_OK)
        return status;
    const bsp::BoardModel &row = bsp::boardModel(id);
    model.hasSupplyLines = row.chassis != bsp::ChassisClass::Other;
    model.hasSupplyReadings = row.chassis == bsp::ChassisClass::TwoFan;
    model.poePorts = row.poePorts;
    model.fans = row.fans.count;
    model.hasFanPresence = row.fans.presenceRegister != 0;
    model.hasClock = row.hasClock;
    addCages(model.cages, row.frontCages);
    addCages(model.cages, row.uplinkCages);
    return BSP_OK;
}

} // namespace iodbg
