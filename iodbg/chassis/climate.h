#pragma once
// How warm the board is, and what cools it.

#include "iodbg/core/items.h"

#include <cstdint>
#include <span>

namespace iodbg {

int32_t readTemperature(Cell &celsius);

/** The temperature and the fans' common level. */
extern const std::span<const Item> kClimateItems;

} // namespace iodbg
