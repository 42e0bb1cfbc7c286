#pragma once
// What is wrong with the unit, and what to do about it.

#include "iodbg/core/findings.h"

namespace iodbg {

/** Everything; what must be there for the rest first. */
Findings unitFindings();

} // namespace iodbg
