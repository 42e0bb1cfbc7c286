#pragma once
// What a capture of the unit has of who the unit is: its records and versions.

#include "iodbg/core/capture.h"
#include "iodbg/core/model.h"

namespace iodbg {

/** Versions, product record, EEPROM. */
void captureIdentity(CaptureSheet &sheet, const Model &model);

} // namespace iodbg
