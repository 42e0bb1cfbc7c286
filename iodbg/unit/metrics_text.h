#pragma once
// Readings as text for monitoring systems.

#include "iodbg/core/report.h"

#include <cstddef>
#include <string>

namespace iodbg {

/**
 * The readings that have a metric, in the table's order. What OpenMetrics demands beyond the older
 * text format is a comment in that (units, the end), and there is nothing that either does not
 * know: gauges alone, no times.
 */
std::string metricsText(const Report &readings);

/** How many samples such a text has. */
size_t countOfSamples(const std::string &text);

} // namespace iodbg
