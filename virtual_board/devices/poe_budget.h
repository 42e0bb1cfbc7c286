#pragma once
// Which ports the controller's power is given to.

#include "virtual_board/devices/poe_controller.h"

namespace vb {

/** A port asks for power: it is powered up, perhaps at the expense of less important ports, or
 * denied. */
void poeRequestPower(PoeController &poe, uint32_t port, uint64_t nowNs);

/**
 * What ports draw, or what there is, has changed: takes power from the least important ports until
 * the budget is kept, then asks again for those that were denied, the most important first.
 */
void poeBalance(PoeController &poe, uint64_t nowNs);

/** Power that there is for ports, in milliwatts. */
uint32_t poeAvailable(const PoeController &poe);

/** Power that powered ports are counted with, in milliwatts. */
uint32_t poeAllocated(const PoeController &poe);

} // namespace vb
