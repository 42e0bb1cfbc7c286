#pragma once
// One whole board: its devices, clock, faults and trace as one block of plain memory, which every
// process of the board maps.

#include "virtual_board/board/clock.h"
#include "virtual_board/board/faults.h"
#include "virtual_board/board/flash_partitions.h"
#include "virtual_board/board/models.h"
#include "virtual_board/board/trace.h"
#include "virtual_board/board/waiters.h"
#include "virtual_board/devices/climate.h"
#include "virtual_board/devices/clock_chip.h"
#include "virtual_board/devices/console.h"
#include "virtual_board/devices/cpld.h"
#include "virtual_board/devices/eeprom.h"
#include "virtual_board/devices/gpio.h"
#include "virtual_board/devices/mdio.h"
#include "virtual_board/devices/pmbus_supply.h"
#include "virtual_board/devices/poe_controller.h"
#include "virtual_board/devices/sfp_module.h"
#include "virtual_board/devices/watchdog.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kSupplies = 2;

/** A plug-in power supply. Unplugged, nothing of it answers. */
struct Supply {
    uint32_t isPresent;
    Eeprom eeprom;     // no blocks: built in, without a bus
    PmbusSupply pmbus; // its failures concern supplies without a bus, too
};

enum class ResetReason : uint32_t { None, PowerOn, Register, Watchdog };

/** What a test compares when it asks whether the board has changed. */
struct Devices {
    Cpld cpld;
    Gpio gpio;
    Eeprom eeprom;
    Supply supply[kSupplies];
    Watchdog watchdog;
    uint32_t resets; // since the board was made
    ResetReason lastReset;
    uint32_t ptpPulses; // on the PTP trigger line
    uint32_t powerCuts; // how often a fault rule has cut the power
    PoeController poe;
    Console console;
    FlashTiming flashTiming;
    Flash flash[kFlashPartitions];
    Climate climate;
    ClockChip clockChip;
    SfpModule sfp[kMostPorts]; // by port of the panel; used where there is a cage
    Mdio mdio;
};

constexpr char kBoardMagic[8] = {'V', 'B', 'O', 'A', 'R', 'D', '\n', '\0'};
constexpr uint32_t kBoardByteOrder = 0x01020304;
constexpr uint32_t kBoardVersion = 7;

struct BoardHeader {
    char magic[8];
    uint32_t byteOrder; // kBoardByteOrder as the creating machine stores it
    uint32_t version;
    uint32_t size; // of the whole block
    uint32_t devId;
    uint32_t check; // over the fields before it
    uint32_t padding;
};

/** What those wait for who watch the board. */
struct Changes {
    alignas(4) uint32_t count; // whatever has been done with the board; time alone does nothing
    uint32_t padding;
};

struct Board {
    BoardHeader header;
    Changes changes;
    Clock clock;
    Waiters waiters;
    Devices devices;
    FaultTable faults;
    TraceRing trace;
};
static_assert(
    sizeof(Board) == 2168328,
    "the layout is another one: raise kBoardVersion as well, and see that buildBoard makes and "
    "consistency.cpp judges what is new");

/** Check value of a header's fields. */
uint32_t headerCheck(const BoardHeader &header);

/** What the identity of a new unit is set to in the factory. */
struct FactoryData {
    const char *serial; // up to 31 characters
    uint8_t mac[6];
};

/** Builds a board of a model as it leaves the factory. The block must be zero-filled. */
void buildBoard(Board &board, const Model &model, const FactoryData &factory,
                const FlashGeometry (&flash)[kFlashPartitions] = kUsualFlash);

} // namespace vb
