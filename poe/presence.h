#pragma once
// Whether there is a controller.

#include "identity/board_catalogue.h"

namespace bsp {

/** The row of this board's model; null when it has no PoE, or its controller is not there. */
const BoardModel *poeModel();

} // namespace bsp
