#include "virtual_board/board/i2c_bus.h"

#include "virtual_board/board/poe_link.h"
#include "virtual_board/board/sfp_cages.h"

#include <cstring>

namespace vb {

namespace {

constexpr uint32_t kBoardChannel = 0;
constexpr uint32_t kEepromDevAddr = 0x50;

/** The supply on a channel of the system bus; null where none with a bus is plugged. */
Supply *supplyOn(Board &board, uint32_t channel) {
    const uint32_t index = channel - kFirstSupplyChannel;
    if (index >= kSupplies)
        return nullptr;
    Supply &supply = board.devices.supply[index];
    return supply.isPresent != 0 && supply.eeprom.blocks != 0 ? &supply : nullptr;
}

/** The EEPROM on a channel of the system bus, or null. */
Eeprom *eepromOn(Board &board, uint32_t channel) {
    if (channel == kBoardChannel)
        return &board.devices.eeprom;
    Supply *supply = supplyOn(board, channel);
    return supply != nullptr ? &supply->eeprom : nullptr;
}

/** The first byte that a transfer addresses; a chip that is sent no offset starts at 0. */
uint32_t eepromAddress(const I2cTransfer &transfer) {
    const uint32_t offset = transfer.offsetLen == 0 ? 0 : transfer.offset % kEepromBlockSize;
    return (transfer.devAddr - kEepromDevAddr) * kEepromBlockSize + offset;
}

bool pmbusTransfer(PmbusSupply &supply, const I2cTransfer &transfer) {
    // What is written to a supply has no effect: its limits are set in the factory.
    if (transfer.isRead)
        pmbusRead(supply, static_cast<uint8_t>(transfer.offset), transfer.data, transfer.length);
    return true;
}

/** The sensor has one register, which no offset chooses and no write changes. */
bool sensorTransfer(const Climate &climate, const I2cTransfer &transfer) {
    uint8_t byte = 0;
    if (!climateSense(climate, &byte))
        return false;
    if (transfer.isRead)
        std::memset(transfer.data, byte, transfer.length);
    return true;
}

bool clockTransfer(ClockChip &chip, const I2cTransfer &transfer) {
    const uint32_t first = transfer.offsetLen == 0 ? 0 : transfer.offset;
    if (chip.isFitted == 0)
        return false;
    if (transfer.isRead)
        clockRead(chip, first, transfer.data, transfer.length);
    else
        clockWrite(chip, first, transfer.data, transfer.length);
    return true;
}

bool chassisTransfer(Board &board, const I2cTransfer &transfer) {
    if (transfer.devAddr == kSensorDevAddr)
        return sensorTransfer(board.devices.climate, transfer);
    return transfer.devAddr == kClockDevAddr && clockTransfer(board.devices.clockChip, transfer);
}

bool eepromTransfer(Board &board, const I2cTransfer &transfer) {
    Eeprom *eeprom = eepromOn(board, transfer.channel);
    if (eeprom == nullptr || transfer.devAddr - kEepromDevAddr >= eeprom->blocks)
        return false;
    if (transfer.isRead)
        eepromRead(*eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    else
        eepromWrite(*eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    return true;
}

} // namespace

bool i2cTransfer(Board &board, const I2cTransfer &transfer) {
    if (transfer.bus == kPoeBus && transfer.channel == kPoeChannel &&
        transfer.devAddr == kPoeDevAddr)
        return poeTransfer(board, transfer);
    if (transfer.bus == kSfpBus)
        return sfpTransfer(board, transfer);
    if (transfer.bus != kSystemBus)
        return false;
    if (transfer.channel == kChassisChannel)
        return chassisTransfer(board, transfer);
    Supply *supply = supplyOn(board, transfer.channel);
    if (supply != nullptr && transfer.devAddr == kPmbusDevAddr)
        return pmbusTransfer(supply->pmbus, transfer);
    return eepromTransfer(board, transfer);
}

} // namespace vb
