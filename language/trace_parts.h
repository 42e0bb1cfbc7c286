#pragma once
// Which part of a unit's panel a request is about.

#include "language/trace_record.h"

#include <string>

namespace language {

/**
 * "supply.1", "sfp.49", "port.3", "temperature"; empty for what is about none. Of a register that
 * several parts share it is the first. Of a model is known at which port its uplinks begin; 0: it
 * is not.
 */
std::string partOf(const TraceRecord &record, uint32_t firstUplink);

} // namespace language
