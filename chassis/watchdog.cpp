// The hardware watchdog: armed by a period other than 0, kept quiet by edges on its line.

#include "bsp.h"

namespace {

constexpr uint32_t kPeriodRegister = 4;
constexpr unsigned kPeriodShift = 2; // bits 7-2

} // namespace

int32_t bspWatchdogFeed(void) {
    uint32_t level = BSP_GPIO_LOW;
    // A line that cannot be read counts as low; the edge is what matters.
    if (bspGpioGetValue(BSP_GPIO_WATCHDOG, &level) != BSP_OK)
        level = BSP_GPIO_LOW;
    bspGpioDirectionOutput(BSP_GPIO_WATCHDOG, level == BSP_GPIO_LOW ? BSP_GPIO_HIGH : BSP_GPIO_LOW);
    return BSP_OK;
}

// Writing a period arms the watchdog; there is nothing left to start.
int32_t bspWatchdogStart(void) {
    return BSP_OK;
}

int32_t bspWatchdogStop(void) {
    return bspWatchdogPeriodSet(BSP_WATCHDOG_OFF);
}

int32_t bspWatchdogPeriodGet(uint32_t *period) {
    if (period == nullptr)
        return BSP_E_NULL;
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(kPeriodRegister, &reg); status != BSP_OK)
        return status;
    *period = (reg & 0xFFu) >> kPeriodShift;
    return BSP_OK;
}

int32_t bspWatchdogPeriodSet(uint32_t period) {
    if (period > BSP_WATCHDOG_PERIOD_MAX)
        return BSP_E_INVALID;
    return bspCpldSet(kPeriodRegister, period << kPeriodShift);
}
