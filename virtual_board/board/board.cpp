#include "virtual_board/board/board.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/climate_lines.h"
#include "virtual_board/board/factory.h"

#include <cstddef>
#include <cstring>

namespace vb {

namespace {

constexpr uint16_t kHardwareA3Cpld12 = 0x1312; // revision A.3, CPLD V1.2

} // namespace

uint32_t headerCheck(const BoardHeader &header) {
    return crc32(reinterpret_cast<const uint8_t *>(&header), offsetof(BoardHeader, check));
}

void buildBoard(Board &board, const Model &model, const FactoryData &factory,
                const FlashGeometry (&flash)[kFlashPartitions]) {
    Devices &devices = board.devices;
    devices.cpld.reg[kCpldDeviceId] = model.devId;
    devices.cpld.reg[kCpldVersion] = kHardwareA3Cpld12;
    cpldReset(devices.cpld, model.poePorts);
    writeBoardEeprom(devices.eeprom, model, factory);
    if (model.poePorts != 0) {
        devices.gpio.external[kPoeResetGpio] = 1; // pulled up
        poeBuild(devices.poe, model.poeChip);
    }
    board.clock.pace = {};
    devices.console.speed = kConsoleUsualSpeed;
    for (uint32_t index = 0; index < kFlashPartitions; ++index)
        devices.flash[index].geometry = flash[index];

    BoardHeader &header = board.header;
    std::memcpy(header.magic, kBoardMagic, sizeof(header.magic));
    header.byteOrder = kBoardByteOrder;
    header.version = kBoardVersion;
    header.size = sizeof(Board);
    header.devId = model.devId;
    header.check = headerCheck(header);

    for (uint32_t index = 0; index < kSupplies; ++index) {
        Supply &supply = devices.supply[index];
        if (model.supplies.haveBus)
            writeSupplyEeprom(supply.eeprom, index);
        supply.isPresent = index < model.supplies.count ? 1 : 0;
        pmbusBuild(supply.pmbus);
    }
    buildClimate(board, model);
    mdioBuild(devices.mdio);
    if (model.hasClock)
        clockBuild(devices.clockChip);
    driveAllLines(board, 0);
}

} // namespace vb
