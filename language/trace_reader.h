#pragma once
// The trace as programs keep it, line by line, read back.

#include "language/trace_record.h"

#include <string>

namespace language {

/** A longer line is none of a trace's. */
constexpr size_t kMostTraceLine = 4096;

/**
 * The request and its answer that a line of JSON tells of. Throws Refused for lines that
 * traceJson does not write: "errno: '-1' is not a number from 0 to 4095".
 */
TraceRecord readTraceLine(const std::string &line);

} // namespace language
