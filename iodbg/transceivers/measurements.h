#pragma once
// What the modules in some cages measure, side by side.

#include "iodbg/core/report.h"

#include <cstdint>
#include <vector>

namespace iodbg {

/** Adds a row for each module, and one for each of its measurements that is beyond a limit. */
void addModuleMeasurements(Report &report, const std::vector<uint32_t> &ports);

} // namespace iodbg
