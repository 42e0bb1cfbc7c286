#include "virtual_board/devices/gpio.h"

namespace vb {

bool gpioLevel(const Gpio &gpio, uint32_t line) {
    return (gpio.isOutput[line] != 0 ? gpio.driven[line] : gpio.external[line]) != 0;
}

bool gpioSetInput(Gpio &gpio, uint32_t line) {
    if (line >= kGpioLines)
        return false;
    gpio.isOutput[line] = 0;
    return true;
}

bool gpioSetOutput(Gpio &gpio, uint32_t line, bool level) {
    if (line >= kGpioLines)
        return false;
    gpio.isOutput[line] = 1;
    gpio.driven[line] = level ? 1 : 0;
    return true;
}

void gpioReset(Gpio &gpio) {
    for (uint32_t line = 0; line < kGpioLines; ++line) {
        gpio.isOutput[line] = 0;
        gpio.driven[line] = 0;
    }
}

bool gpioRead(const Gpio &gpio, uint32_t line, uint32_t *level) {
    if (line >= kGpioLines)
        return false;
    *level = gpioLevel(gpio, line) ? 1 : 0;
    return true;
}

bool gpioIsConsistent(const Gpio &gpio) {
    for (uint32_t line = 0; line < kGpioLines; ++line) {
        if (gpio.isOutput[line] > 1 || gpio.driven[line] > 1 || gpio.external[line] > 1)
            return false;
    }
    return true;
}

} // namespace vb
