#pragma once
// The trace in the board's words.

#include "virtual_board/board/trace.h"

#include <string>

namespace vb {

/** A request and its answer in one line: "CPLD read  reg 2 (version) = 0x1312". */
std::string traceText(const TraceRecord &record);

} // namespace vb
