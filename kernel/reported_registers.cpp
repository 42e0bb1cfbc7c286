#include "kernel/reported_registers.h"

namespace {

int32_t reported(int32_t status, const char *call, bsp::CallSite site) {
    if (status != BSP_OK)
        bsp::report(site, "%s error. ret=%d \n", call, status);
    return status;
}

} // namespace

int32_t bsp::readRegister(uint32_t reg, uint16_t *value, CallSite site) {
    return reported(bspCpldGet(reg, value), "bspCpldGet", site);
}

int32_t bsp::writeRegister(uint32_t reg, uint32_t value, CallSite site) {
    return reported(bspCpldSet(reg, value), "bspCpldSet", site);
}
