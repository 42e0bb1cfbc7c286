#pragma once
// The watchdog as it is read.

#include "iodbg/core/report.h"

#include <cstdint>

namespace iodbg {

/** Adds a period that was read, and what it means. */
void addPeriod(Section &section, uint32_t period);

/** Reads the period and adds it as a part; one that cannot be read is noted. */
void addWatchdog(Report &report);

} // namespace iodbg
