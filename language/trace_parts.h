#pragma once
// Which part of a unit a request is about.

#include "language/trace_record.h"

#include <string>

namespace language {

/** "supply.1", "sfp.49", "port.3", "temperature"; empty for what is about none. */
std::string partOf(const TraceRecord &record);

} // namespace language
