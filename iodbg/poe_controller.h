#pragma once
// What the PoE controller says of itself and of all ports together.

#include "iodbg/report.h"

namespace iodbg {

/**
 * Adds version, state and power totals; what cannot be read is noted in the report. A controller
 * that is missing is not asked.
 */
void addPoeController(Report &report);

} // namespace iodbg
