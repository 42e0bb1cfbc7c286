#pragma once
// What a module tells of itself, as `iodbg sfp show` shows it.

#include "iodbg/core/report.h"
#include "iodbg/transceivers/identification.h"

#include <cstdint>

namespace iodbg {

void addIdentification(Section &section, const Identification &module);

/** Whether the module has a PHY for copper, and of what mode. */
void addCopper(Report &report, Section &section, uint32_t port);

/** The diagnostics of a module that has them, with a table of what it measures. */
void addDiagnostics(Report &report, Section &section, uint32_t port, const Identification &module);

} // namespace iodbg
