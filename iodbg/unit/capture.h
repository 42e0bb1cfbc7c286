#pragma once
// A unit in a file: everything that can be read of it without changing it.

#include "iodbg/core/capture.h"

#include <cstdint>

namespace iodbg {

class Console;

/** Captures the unit, with progress on a terminal. What cannot be read is told in its place. */
language::CapturedUnit captureUnit(Console &console, const CaptureWishes &wishes);

} // namespace iodbg
