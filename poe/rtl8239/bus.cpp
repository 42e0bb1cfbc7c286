#include "poe/rtl8239/bus.h"

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "support/board_map.h"
#include "support/message.h"
#include "support/register_bits.h"

namespace {

using bsp::kPoeController;

bool hasController() {
    uint32_t devId = 0;
    return bspDevIdGet(&devId) == BSP_OK && bsp::boardModel(devId).hasPoe();
}

/** Checks a raw transfer's buffer and board; reported under the name of the transfer. */
int32_t checkTransfer(const uint8_t *buffer, int32_t length,
                      bsp::CallSite site = bsp::CallSite::here()) {
    if (buffer == nullptr || length < 1) {
        bsp::reportError(site, "errno is 1102.\n");
        return BSP_E_POE_INVALID;
    }
    return hasController() ? BSP_OK : BSP_E_POE_UNAVAILABLE;
}

} // namespace

int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length) {
    if (const int32_t status = checkTransfer(buffer, length); status != BSP_OK)
        return status;
    return bspI2cWrite(kPoeController.bus, kPoeController.channel, kPoeController.device, 0, 0,
                       buffer, length) == BSP_OK
               ? BSP_OK
               : BSP_E_POE_WRITE;
}

int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length) {
    if (const int32_t status = checkTransfer(buffer, length); status != BSP_OK)
        return status;
    return bspI2cRead(kPoeController.bus, kPoeController.channel, kPoeController.device, 0, 0,
                      buffer, length) == BSP_OK
               ? BSP_OK
               : BSP_E_POE_READ;
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

int32_t bspPoeRtl8239ResetSet(uint32_t value) {
    return bspGpioDirectionOutput(bsp::kPoeResetGpio, value != 0 ? BSP_GPIO_LOW : BSP_GPIO_HIGH);
}
