#pragma once
// What is wrong with the unit, and what to do about it.

#include "iodbg/core/findings.h"
#include "iodbg/poe/health.h"

namespace iodbg {

/** Everything; what must be there for the rest first. known: PoE ports that were just asked. */
Findings unitFindings(const PoePortFaults &known = {});

} // namespace iodbg
