#pragma once
// What the controller measures at its ports, in its own units.

#include "virtual_board/devices/poe_controller.h"

namespace vb {

struct PoeMeasurement {
    uint16_t voltage;     // in 64.45 millivolts
    uint16_t current;     // in milliamperes
    uint16_t temperature; // 220 less four fifths of the degrees Celsius
    uint16_t power;       // in 100 milliwatts
};

/** Voltage and current waver by a few steps, always alike for the same port and tenth of a second.
 */
PoeMeasurement poeMeasure(const PoeController &poe, uint32_t port, uint64_t nowNs);

/** Power that all ports draw, in milliwatts. */
uint32_t poeTotalDrawn(const PoeController &poe);

} // namespace vb
