#pragma once
// What the PoE controller says of itself and of all ports together.

#include "iodbg/core/items.h"

#include <span>

namespace iodbg {

/**
 * Adds version, state and power totals; what cannot be read is noted in the report. A controller
 * that is missing is not asked.
 */
void addPoeController(Report &report);

/** Adds whether the controller is there; false when it cannot be asked. */
bool addPoePresence(Report &report, Section &section);

/** The power budget, and what is drawn of it; an exchange with the controller for each. */
extern const std::span<const Item> kPoePowerItems;

} // namespace iodbg
