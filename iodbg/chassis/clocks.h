#pragma once
// The clock chip beside the system's clock.

#include "iodbg/chassis/calendar.h"
#include "iodbg/core/report.h"

namespace iodbg {

/** Adds what the chip holds, and how far it is from the system's clock. */
void addClocks(Section &section, const ChipTime &chip);

/** Reads the chip and adds both clocks as a part; a chip that cannot be read is noted. */
void addClocks(Report &report);

} // namespace iodbg
