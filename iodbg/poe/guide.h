#pragma once
// What is known of the PoE controllers beyond what the library tells.

#include "iodbg/core/progress.h"
#include "poe/guide.h"

#include <cstdint>
#include <vector>

namespace iodbg {

/** The guide to a controller; throws for one that is not known. */
const bsp::PoeGuide &poeGuide(bsp::PoeChip chip);

/** The steps of long work of an amount. */
std::vector<WorkStep> stepsOf(const bsp::PoeWork &work, uint32_t amount);

} // namespace iodbg
