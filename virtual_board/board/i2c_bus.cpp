#include "virtual_board/board/i2c_bus.h"

namespace vb {

namespace {

constexpr uint32_t kSystemBus = 0;
constexpr uint32_t kBoardChannel = 0;
constexpr uint32_t kFirstSupplyChannel = 2;
constexpr uint32_t kEepromDevAddr = 0x50;

/** The EEPROM on a channel of the system bus; null where none is plugged. */
Eeprom *eepromOn(Board &board, uint32_t channel) {
    if (channel == kBoardChannel)
        return &board.devices.eeprom;
    const uint32_t index = channel - kFirstSupplyChannel;
    if (index < kSupplies && board.devices.supply[index].isPresent != 0)
        return &board.devices.supply[index].eeprom;
    return nullptr;
}

/** The first byte that a transfer addresses; a chip that is sent no offset starts at 0. */
uint32_t eepromAddress(const I2cTransfer &transfer) {
    const uint32_t offset = transfer.offsetLen == 0 ? 0 : transfer.offset % kEepromBlockSize;
    return (transfer.devAddr - kEepromDevAddr) * kEepromBlockSize + offset;
}

} // namespace

bool i2cTransfer(Board &board, const I2cTransfer &transfer) {
    if (transfer.bus != kSystemBus)
        return false;
    Eeprom *eeprom = eepromOn(board, transfer.channel);
    if (eeprom == nullptr || transfer.devAddr - kEepromDevAddr >= eeprom->blocks)
        return false;
    if (transfer.isRead)
        eepromRead(*eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    else
        eepromWrite(*eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    return true;
}

} // namespace vb
