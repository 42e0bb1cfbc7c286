#pragma once
// Which device answers at which place of the I2C buses.

#include "virtual_board/board/board.h"

namespace vb {

// Where devices with commands of their own are.
constexpr uint32_t kSystemBus = 0;
constexpr uint32_t kFirstSupplyChannel = 2; // one for each supply
constexpr uint32_t kPmbusDevAddr = 0x58;
constexpr uint32_t kChassisChannel = 1; // temperature sensor and clock
constexpr uint32_t kSensorDevAddr = 0x4F;
constexpr uint32_t kClockDevAddr = 0x51;
constexpr uint32_t kPoeBus = 16;
constexpr uint32_t kPoeChannel = 0;
constexpr uint32_t kPoeDevAddr = 0x20;

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
