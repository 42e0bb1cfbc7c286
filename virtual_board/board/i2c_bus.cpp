#include "virtual_board/board/i2c_bus.h"

#include "virtual_board/board/poe_link.h"
#include "virtual_board/board/sfp_cages.h"

#include <cstring>

namespace vb {

namespace {

/** The plug-in supply on whose channel a transfer is; null where none with a bus is plugged. */
Supply *supplyOf(Board &board, const I2cTransfer &transfer) {
    Supply &supply = board.devices.supply[transfer.channel - kSupplyPmbus.channel];
    return supply.isPresent != 0 && supply.eeprom.blocks != 0 ? &supply : nullptr;
}

/** The first byte that a transfer addresses; a chip that is sent no offset starts at 0. */
uint32_t eepromAddress(const I2cTransfer &transfer) {
    const uint32_t offset = transfer.offsetLen == 0 ? 0 : transfer.offset % kEepromBlockSize;
    return (transfer.devAddr - kBoardEeprom.device) * kEepromBlockSize + offset;
}

bool eepromTransfer(Eeprom &eeprom, const I2cTransfer &transfer) {
    if (transfer.devAddr - kBoardEeprom.device >= eeprom.blocks)
        return false;
    if (transfer.isRead)
        eepromRead(eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    else
        eepromWrite(eeprom, eepromAddress(transfer), transfer.data, transfer.length);
    return true;
}

// What the devices do, one function for each kind.

bool boardEepromTransfer(Board &board, const I2cTransfer &transfer) {
    return eepromTransfer(board.devices.eeprom, transfer);
}

bool supplyEepromTransfer(Board &board, const I2cTransfer &transfer) {
    Supply *supply = supplyOf(board, transfer);
    return supply != nullptr && eepromTransfer(supply->eeprom, transfer);
}

bool pmbusTransfer(Board &board, const I2cTransfer &transfer) {
    Supply *supply = supplyOf(board, transfer);
    if (supply == nullptr)
        return false;
    // What is written to a supply has no effect: its limits are set in the factory.
    if (transfer.isRead)
        pmbusRead(supply->pmbus, static_cast<uint8_t>(transfer.offset), transfer.data,
                  transfer.length);
    return true;
}

/** The sensor has one register, which no offset chooses and no write changes. */
bool sensorTransfer(Board &board, const I2cTransfer &transfer) {
    uint8_t byte = 0;
    if (!climateSense(board.devices.climate, &byte))
        return false;
    if (transfer.isRead)
        std::memset(transfer.data, byte, transfer.length);
    return true;
}

bool clockTransfer(Board &board, const I2cTransfer &transfer) {
    ClockChip &chip = board.devices.clockChip;
    const uint32_t first = transfer.offsetLen == 0 ? 0 : transfer.offset;
    if (chip.isFitted == 0)
        return false;
    if (transfer.isRead)
        clockRead(chip, first, transfer.data, transfer.length);
    else
        clockWrite(chip, first, transfer.data, transfer.length);
    return true;
}

/** Who answers from a place on: on how many channels, and at how many addresses. */
struct Attachment {
    I2cPlace place;
    uint32_t channels;
    uint32_t addresses;
    bool (*transfer)(Board &board, const I2cTransfer &transfer); // false: nobody is there
};

constexpr uint32_t kAll = UINT32_MAX;

constexpr Attachment kAttachments[] = {
    {kBoardEeprom, 1, kEepromMaxBlocks, boardEepromTransfer},
    {kTemperatureSensor, 1, 1, sensorTransfer},
    {kClockChip, 1, 1, clockTransfer},
    {kSupplyEeprom, kSupplies, kEepromMaxBlocks, supplyEepromTransfer},
    {kSupplyPmbus, kSupplies, 1, pmbusTransfer},
    {{kUplinkModule.bus, 0, 0}, kAll, kAll, sfpTransfer}, // the cages know their channels
    {kPoeController, 1, 1, poeTransfer},
};

} // namespace

bool i2cTransfer(Board &board, const I2cTransfer &transfer) {
    for (const Attachment &row : kAttachments) {
        if (transfer.bus == row.place.bus && transfer.channel - row.place.channel < row.channels &&
            transfer.devAddr - row.place.device < row.addresses)
            return row.transfer(board, transfer);
    }
    return false;
}

} // namespace vb
