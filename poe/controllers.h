#pragma once
// The controllers that a build knows: a row for each, by the name that the rows of models have for
// it (identity/board_catalogue.h).

#include "identity/board_catalogue.h"
#include "poe/driver_extension.h"

#include <span>

namespace bsp {

struct PoeController {
    PoeChip chip;
    PoeDriver driver;
};

/** The catalogue: poe/controllers.cpp, or what a build has in its place. */
extern const std::span<const PoeController> kPoeControllers;

/** The driver of this board's controller; null when there is none that this build knows. It is the
 * dispatcher's: a build that has another catalogue in the place of poe/controllers.cpp keeps it. */
const PoeDriver *poeDriver();

} // namespace bsp
