#pragma once
// What a transfer on the I2C bus means to the device that it is for.

#include "virtual_board/board/trace.h"

#include <string>

namespace vb {

/** "PoE port status", "supply 1 READ_VIN"; empty for devices that hold nothing but bytes. */
std::string transferName(const TraceRecord &record);

} // namespace vb
