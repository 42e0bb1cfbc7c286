// Front-panel LEDs.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "support/board_map.h"
#include "support/register_bits.h"

namespace {

/** Where a lamp's field lies. */
struct Lamp {
    uint32_t reg;
    int64_t lowestBit;
    unsigned width;
};

int32_t findPoePortLamp(uint32_t index, Lamp *lamp) {
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    const uint32_t ports = bsp::boardModel(devId).poePorts;
    if (ports == 0)
        return BSP_E_NOT_SUPPORTED;
    if (index < 1 || index > ports)
        return BSP_E_INVALID;
    *lamp = {bsp::kCpldPoeLamps + (index - 1) / bsp::kCpldLinesPerRegister,
             (index - 1) % bsp::kCpldLinesPerRegister, 1};
    return BSP_OK;
}

int32_t findLamp(uint32_t kind, uint32_t index, Lamp *lamp) {
    switch (kind) {
    case BSP_LED_SYSTEM:
        *lamp = {bsp::kSystemLamp.reg, bsp::kSystemLamp.lowestBit, bsp::kSystemLamp.width};
        return BSP_OK;
    case BSP_LED_4:
        *lamp = {bsp::kLamp4.reg, bsp::kLamp4.bit, 1};
        return BSP_OK;
    case BSP_LED_5:
        *lamp = {bsp::kLamp5.reg, bsp::kLamp5.bit, 1};
        return BSP_OK;
    case BSP_LED_INDEXED:
        *lamp = {bsp::kIndexedLamp.reg, int64_t{index} + bsp::kIndexedLamp.bit - 1, 1};
        return BSP_OK;
    case BSP_LED_POE_PORT:
        return findPoePortLamp(index, lamp);
    default:
        return BSP_E_NOT_SUPPORTED;
    }
}

/** What is written for a state: the system lamp has four, the others on and off. */
int32_t encodeState(uint32_t kind, uint32_t state, uint32_t *value) {
    constexpr uint32_t kSystemLampCodes[] = {0, 3, 2, 1};
    if (state > BSP_LED_STATE_3)
        return BSP_E_INVALID;
    if (kind != BSP_LED_SYSTEM && state > BSP_LED_STATE_1)
        return BSP_E_NOT_SUPPORTED;
    *value = kind == BSP_LED_SYSTEM ? kSystemLampCodes[state] : state;
    return BSP_OK;
}

} // namespace

int32_t bspLedStateSet(uint32_t, uint32_t index, uint32_t kind, uint32_t, uint32_t state) {
    Lamp lamp{};
    if (const int32_t status = findLamp(kind, index, &lamp); status != BSP_OK)
        return status;
    uint32_t value = 0;
    if (const int32_t status = encodeState(kind, state, &value); status != BSP_OK)
        return status;
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(lamp.reg, &reg); status != BSP_OK)
        return status;
    return bspCpldSet(lamp.reg, bsp::withField(reg, lamp.lowestBit, lamp.width, value));
}
