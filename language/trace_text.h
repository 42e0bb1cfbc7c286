#pragma once
// The trace in words.

#include "language/trace_record.h"

#include <string>

namespace language {

/** A request and its answer in one line: "CPLD read  reg 2 (version) = 0x1312". */
std::string traceText(const TraceRecord &record);

} // namespace language
