#pragma once
// Which device answers at which place of the I2C buses.

#include "virtual_board/board/board.h"

namespace vb {

struct I2cTransfer {
    uint32_t bus;
    uint32_t channel;
    uint32_t devAddr;
    uint32_t offset;
    uint32_t offsetLen; // offset bytes that are sent before the data
    bool isRead;
    uint8_t *data; // written by a read, only read by a write
    uint32_t length;
    uint64_t nowNs; // on the board's clock
};

/** Carries out a transfer; false when no device acknowledges its address. */
bool i2cTransfer(Board &board, const I2cTransfer &transfer);

} // namespace vb
