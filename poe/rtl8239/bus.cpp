#include "poe/rtl8239/bus.h"

#include "bsp.h"
#include "poe/bus.h"
#include "support/message.h"

namespace {

/** Whether there is nothing to transfer, which is reported under the name of the transfer. */
bool isEmpty(const uint8_t *buffer, int32_t length, bsp::CallSite site = bsp::CallSite::here()) {
    if (buffer != nullptr && length >= 1)
        return false;
    bsp::reportError(site, "errno is 1102.\n");
    return true;
}

} // namespace

int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length) {
    return isEmpty(buffer, length) ? int32_t{BSP_E_POE_INVALID} : bsp::poeWrite(buffer, length);
}

int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length) {
    return isEmpty(buffer, length) ? int32_t{BSP_E_POE_INVALID} : bsp::poeRead(buffer, length);
}

int32_t bspPoeRtl8239ResetSet(uint32_t value) {
    return bsp::poeHoldInReset(value != 0);
}

const BspPoePortMap *bspPoeRtl8239PortMapGet(void) {
    return bsp::poePortMap();
}
