#include "iodbg/model.h"

#include "bsp.h"
#include "identity/board_catalogue.h"

namespace iodbg {

int32_t readModel(Model &model) {
    uint32_t id = 0;
    const int32_t status = bspDevIdGet(&id);
    if (status != BSP_OK)
        return status;
    const bsp::BoardModel &row = bsp::boardModel(id);
    model.hasSupplyLines = row.chassis != bsp::ChassisClass::Other;
    model.hasSupplyReadings = row.chassis == bsp::ChassisClass::TwoFan;
    model.poePorts = row.poePorts;
    return BSP_OK;
}

} // namespace iodbg
