#include "poe/bus.h"

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "support/board_map.h"

namespace {

bool hasController() {
    uint32_t devId = 0;
    return bspDevIdGet(&devId) == BSP_OK && bsp::boardModel(devId).hasPoe();
}

} // namespace

int32_t bsp::poeWrite(const uint8_t *buffer, int32_t length) {
    if (!hasController())
        return BSP_E_POE_UNAVAILABLE;
    return bspI2cWrite(kPoeController.bus, kPoeController.channel, kPoeController.device, 0, 0,
                       buffer, length) == BSP_OK
               ? BSP_OK
               : BSP_E_POE_WRITE;
}

int32_t bsp::poeRead(uint8_t *buffer, int32_t length) {
    if (!hasController())
        return BSP_E_POE_UNAVAILABLE;
    return bspI2cRead(kPoeController.bus, kPoeController.channel, kPoeController.device, 0, 0,
                      buffer, length) == BSP_OK
               ? BSP_OK
               : BSP_E_POE_READ;
}

int32_t bsp::poeHoldInReset(bool isHeld) {
    return bspGpioDirectionOutput(kPoeResetGpio, isHeld ? BSP_GPIO_LOW : BSP_GPIO_HIGH);
}
