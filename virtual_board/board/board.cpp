#include "virtual_board/board/board.h"

#include "virtual_board/board/factory.h"

#include <cstddef>
#include <cstring>

namespace vb {

namespace {

constexpr uint16_t kHardwareA3Cpld12 = 0x1312; // revision A.3, CPLD V1.2
constexpr uint16_t kPoeAbsent = 0x4000;        // active-low presence of the PoE controller

} // namespace

uint32_t headerCheck(const BoardHeader &header) {
    return crc32(reinterpret_cast<const uint8_t *>(&header), offsetof(BoardHeader, check));
}

void buildBoard(Board &board, const Model &model, const FactoryData &factory) {
    Devices &devices = board.devices;
    devices.cpld.reg[kCpldDeviceId] = model.devId;
    devices.cpld.reg[kCpldVersion] = kHardwareA3Cpld12;
    devices.cpld.reg[kCpldControl] = kPoeAbsent;
    writeBoardEeprom(devices.eeprom, model, factory);
    for (uint32_t index = 0; index < kSupplies; ++index) {
        if (!model.hasSupplyEeproms)
            continue;
        writeSupplyEeprom(devices.supply[index].eeprom, index);
        devices.supply[index].isPresent = 1;
    }

    BoardHeader &header = board.header;
    std::memcpy(header.magic, kBoardMagic, sizeof(header.magic));
    header.byteOrder = kBoardByteOrder;
    header.version = kBoardVersion;
    header.size = sizeof(Board);
    header.devId = model.devId;
    header.check = headerCheck(header);
}

} // namespace vb
