#pragma once
// What a capture of the unit has of the SFP cages and the modules in them.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

void captureCages(CaptureSheet &sheet, const Model &model);

} // namespace iodbg
