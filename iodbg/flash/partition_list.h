#pragma once
// The partitions of the flash side by side, and one by one.

#include "iodbg/core/report.h"

#include <string>

namespace iodbg {

/** Adds a table of all partitions; one that cannot be asked hides no other. */
void addPartitions(Report &report);

/** Adds what the driver tells of one; throws where it cannot be asked. */
void addPartition(Report &report, const std::string &device);

} // namespace iodbg
