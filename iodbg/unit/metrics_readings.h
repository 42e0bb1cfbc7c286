#pragma once
// All readings of the unit, for `iodbg metrics`.

#include "iodbg/core/report.h"

namespace iodbg {

/**
 * Reads everything that is read without changing the unit, and judges it. What cannot be read is
 * noted, and hides nothing else.
 */
Report takeReadings();

} // namespace iodbg
