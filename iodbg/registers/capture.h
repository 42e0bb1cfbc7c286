#pragma once
// What a capture of the unit has of its registers and lines.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

/** The registers and lines that the library reads on a model. */
void captureRegisters(CaptureSheet &sheet, const Model &model);

} // namespace iodbg
