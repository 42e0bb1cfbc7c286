#pragma once
// The trace for programs.

#include "language/trace_record.h"

#include <nlohmann/json_fwd.hpp>

namespace language {

/**
 * A request and its answer as an object. Every object has "time_ns", "pid" and "kind"; requests to
 * the driver have "result" (null when the ioctl failed) and, like opens, "errno" (0: none). Data is
 * a text of hexadecimal digits; what was not transferred is null.
 */
nlohmann::json traceJson(const TraceRecord &record);

} // namespace language
