// The hardware watchdog: armed by a period other than 0, kept quiet by edges on its line.

#include "bsp.h"
#include "support/board_map.h"
#include "support/register_bits.h"

using bsp::kWatchdogPeriod;

int32_t bspWatchdogFeed(void) {
    uint32_t level = BSP_GPIO_LOW;
    // A line that cannot be read counts as low; the edge is what matters.
    if (bspGpioGetValue(bsp::kWatchdogGpio, &level) != BSP_OK)
        level = BSP_GPIO_LOW;
    bspGpioDirectionOutput(bsp::kWatchdogGpio,
                           level == BSP_GPIO_LOW ? BSP_GPIO_HIGH : BSP_GPIO_LOW);
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
    if (const int32_t status = bspCpldGet(kWatchdogPeriod.reg, &reg); status != BSP_OK)
        return status;
    *period = bsp::fieldOf(reg, kWatchdogPeriod);
    return BSP_OK;
}

int32_t bspWatchdogPeriodSet(uint32_t period) {
    if (period > BSP_WATCHDOG_PERIOD_MAX)
        return BSP_E_INVALID;
    return bspCpldSet(kWatchdogPeriod.reg, period << kWatchdogPeriod.lowestBit);
}
