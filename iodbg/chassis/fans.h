#pragma once
// The fans as they are read.

#include "iodbg/core/model.h"
#include "iodbg/core/report.h"

namespace iodbg {

/** The common level, 1 to 10, as the CPLD holds it. */
int32_t readFanLevel(uint32_t &level);
int32_t readFanLevel(Cell &level);

/** A row for each fan of the model. */
Table fanTable(Report &report, const Model &model);

} // namespace iodbg
