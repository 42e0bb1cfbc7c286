#pragma once
// What a capture of the unit has of its supplies, fans, sensors and clocks.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

/** The temperature, which needs nothing but its bus. */
void captureTemperature(CaptureSheet &sheet, const Model &model);
void captureSupplies(CaptureSheet &sheet, const Model &model);
void captureFans(CaptureSheet &sheet, const Model &model);
void captureClock(CaptureSheet &sheet, const Model &model);

} // namespace iodbg
