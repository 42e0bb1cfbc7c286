#pragma once
// What a capture of the unit has of the flash and what it holds.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

/** Boot settings, partitions, banks. */
void captureFlash(CaptureSheet &sheet, const Model &model);

} // namespace iodbg
