#pragma once
// What a capture of the unit has of the PoE controller and its ports.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

void capturePoe(CaptureSheet &sheet, const Model &model);

/** What that takes at least, of a model's ports. */
uint32_t capturePoeMs(const Model &model);

} // namespace iodbg
