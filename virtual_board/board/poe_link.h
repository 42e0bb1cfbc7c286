#pragma once
// The I2C connection of the PoE controller, with the faults of its frames.

#include "virtual_board/board/i2c_bus.h"

namespace vb {

/** Carries out a transfer with the controller; false when it does not acknowledge. */
bool poeTransfer(Board &board, const I2cTransfer &transfer);

} // namespace vb
