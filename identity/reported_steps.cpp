#include "identity/reported_steps.h"

namespace {

int32_t reported(int32_t status, const char *failure, bsp::CallSite site) {
    if (status != BSP_OK)
        bsp::report(site, "%s\n", failure);
    return status;
}

} // namespace

int32_t bsp::readDeviceId(uint32_t *devId, CallSite site) {
    return reported(bspDevIdGet(devId), "get devId failed", site);
}

int32_t bsp::readBoardRecord(BspDevinfo *record, CallSite site) {
    return reported(bspDevinfoGet(BSP_DEVINFO_BOARD, record), "devinfo get failed", site);
}

int32_t bsp::writeBoardRecord(BspDevinfo *record, CallSite site) {
    return reported(bspDevinfoSet(BSP_DEVINFO_BOARD, record), "devinfo set failed", site);
}
