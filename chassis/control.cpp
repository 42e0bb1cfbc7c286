// Reset of the board, the PTP trigger line, and slots that this box does not have.

#include "bsp.h"
#include "kernel/reported_registers.h"
#include "support/board_map.h"
#include "support/register_bits.h"

#include <unistd.h>

namespace {

using bsp::kPtpTrigger;

constexpr useconds_t kPtpPulse = 100;

int32_t drivePtpLine(bool level, bsp::CallSite site = bsp::CallSite::here()) {
    uint16_t reg = 0;
    if (const int32_t status = bsp::readRegister(kPtpTrigger.reg, &reg, site); status != BSP_OK)
        return status;
    return bsp::writeRegister(kPtpTrigger.reg,
                              bsp::withField(reg, kPtpTrigger.bit, 1, level ? 1 : 0), site);
}

} // namespace

int32_t bspHwReboot(void) {
    return bspCpldSet(bsp::kCpldReset, 0);
}

int32_t bspPtpTriggerSet(uint32_t) {
    if (const int32_t status = drivePtpLine(false); status != BSP_OK)
        return status;
    usleep(kPtpPulse);
    return drivePtpLine(true);
}

int32_t bspSlotPresentGet(uint32_t, uint32_t *) {
    return BSP_E_NOT_SUPPORTED;
}
int32_t bspSlotPowerStateSet(uint32_t, uint32_t) {
    return BSP_E_NOT_SUPPORTED;
}
