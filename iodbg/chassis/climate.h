#pragma once
// How warm the board is, and what cools it.

#include "iodbg/core/items.h"

#include <cstdint>
#include <span>

namespace iodbg {

/** A temperature of the unit, each of a sensor of its own. */
struct Temperature {
    Item item;
    const char *what; // cannot be done when it fails
};

extern const std::span<const Temperature> kTemperatures;

/** The temperature and the fans' common level. */
extern const std::span<const Item> kClimateItems;

} // namespace iodbg
