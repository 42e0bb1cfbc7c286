#pragma once
// Devices of one bus: when none of them answers it is not each of them that has failed.

#include "iodbg/core/findings.h"

#include <cstddef>

namespace iodbg {

/**
 * Where no device of a bus answers, that is the bus's fault alone: what was found of the devices
 * becomes not judged, and the bus's finding is put in at this place.
 */
void blameBuses(Findings &findings, size_t place);

} // namespace iodbg
