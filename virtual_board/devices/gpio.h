#pragma once
// The processor's GPIO lines.

#include <cstdint>

namespace vb {

constexpr uint32_t kGpioLines = 32;

/** The world's face: levels that the board's circuits apply to lines that are inputs. */
struct Gpio {
    uint8_t isOutput[kGpioLines];
    uint8_t driven[kGpioLines];   // level that the processor drives while the line is an output
    uint8_t external[kGpioLines]; // level that the board applies
};

/** The level on the line's wire. */
bool gpioLevel(const Gpio &gpio, uint32_t line);

bool gpioSetInput(Gpio &gpio, uint32_t line);
bool gpioSetOutput(Gpio &gpio, uint32_t line, bool level);
/** All lines are inputs. */
void gpioReset(Gpio &gpio);

bool gpioRead(const Gpio &gpio, uint32_t line, uint32_t *level);

/** Whether the state is one that lines can have. */
bool gpioIsConsistent(const Gpio &gpio);

} // namespace vb
