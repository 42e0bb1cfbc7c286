#pragma once
// What can be measured at the ports.

#include "virtual_board/devices/poe_controller.h"

namespace vb {

struct PoeMeasurement {
    uint32_t microvolts;
    uint32_t milliamperes;
    uint32_t degrees; // Celsius
    uint32_t milliwatts;
};

/** Voltage and current waver by a few steps, always alike for the same port and tenth of a second.
 */
PoeMeasurement poeMeasure(const PoeController &poe, uint32_t port, uint64_t nowNs);

/** Power that all ports draw, in milliwatts. */
uint32_t poeTotalDrawn(const PoeController &poe);

} // namespace vb
