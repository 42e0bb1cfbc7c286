#pragma once
// What a module tells of itself, as `iodbg sfp show` shows it.

#include "iodbg/core/report.h"
#include "iodbg/transceivers/module.h"

#include <cstdint>

namespace iodbg {

void addIdentification(Section &section, const Identification &module);

/** Whether the module has a PHY for copper, and of what mode. */
void addCopper(Report &report, Section &section, uint32_t port);

/** The diagnostics of a module that has them, without what it measures. */
void addDiagnostics(Report &report, Section &section, const Module &module);

/** What a module measures, with its limits and its own judgement. */
Table measurementsTable(const Diagnostics &diagnostics);

/** "-2.5 C", "0.0600 mW (-12.22 dBm)". */
Cell quantityCell(Quantity quantity, double value);

} // namespace iodbg
