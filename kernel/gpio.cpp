// GPIO lines.

#include "kernel/request.h"

using bsp::addressSlot;
using bsp::sendRequest;
using bsp::signExtend;
using bsp::zeroExtend;

int32_t bspGpioDirectionInput_handle(uint32_t pin) {
    return sendRequest(BSP_REQ_GPIO_INPUT, {zeroExtend(pin)});
}

int32_t bspGpioDirectionOutput_handle(uint32_t pin, int32_t level) {
    return sendRequest(BSP_REQ_GPIO_OUTPUT,
                       {zeroExtend(pin), signExtend(static_cast<uint32_t>(level))});
}

int32_t bspGpioGetValue_handle(uint32_t pin, uint32_t *value) {
    if (value == nullptr)
        return BSP_E_NULL;
    return sendRequest(BSP_REQ_GPIO_READ, {zeroExtend(pin), addressSlot(value)});
}

int32_t bspGpioDirectionInput(uint32_t pin) {
    return bspGpioDirectionInput_handle(pin);
}

int32_t bspGpioDirectionOutput(uint32_t pin, int32_t level) {
    return bspGpioDirectionOutput_handle(pin, level);
}

int32_t bspGpioGetValue(uint32_t pin, uint32_t *value) {
    return bspGpioGetValue_handle(pin, value);
}
