// Whether there is a controller: the model's row says that there may be one, a line of the CPLD
// that it is plugged.

#include "poe/presence.h"

#include "bsp.h"
#include "support/board_map.h"
#include "support/message.h"
#include "support/register_bits.h"

const bsp::BoardModel *bsp::poeModel() {
    uint32_t devId = 0;
    if (bspDevIdGet(&devId) != BSP_OK)
        return nullptr;
    const BoardModel &model = boardModel(devId);
    uint32_t presence = BSP_POE_CONTROLLER_MISSING;
    if (!model.hasPoe() || bspPoeOnlineGet(&presence) != BSP_OK ||
        presence != BSP_POE_CONTROLLER_PRESENT)
        return nullptr;
    return &model;
}

int32_t bspPoeOnlineGet(uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(bsp::kPoeAbsence.reg, &reg); status != BSP_OK) {
        bsp::report(bsp::CallSite::here(), "bspCpldGet error. ret=%d \n", status);
        return status;
    }
    *out = bsp::hasBit(reg, bsp::kPoeAbsence.bit) ? BSP_POE_CONTROLLER_MISSING
                                                  : BSP_POE_CONTROLLER_PRESENT;
    return BSP_OK;
}
