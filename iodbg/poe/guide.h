#pragma once
// What is known of the PoE controllers beyond what the library tells.

#include "iodbg/core/progress.h"
#include "poe/guide.h"

#include <cstdint>
#include <vector>

namespace iodbg {

/** The guide to this board's controller; throws where the model has none that is known. */
const bsp::PoeGuide &poeGuide();

/** The steps of long work of an amount. */
std::vector<WorkStep> stepsOf(const bsp::PoeWork &work, uint32_t amount);

} // namespace iodbg
