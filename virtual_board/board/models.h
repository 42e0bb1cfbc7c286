#pragma once
// The hardware of each model, from its circuit diagrams: what the virtual board is built of. It is
// kept apart from the library's own board table on purpose, so that a mistake in one shows.

#include "virtual_board/devices/board_map.h"
#include "virtual_board/devices/poe_controller.h"

#include <cstdint>
#include <span>

namespace vb {

/** Fans, and how they are wired to the CPLD. */
struct FanWiring {
    uint8_t count;
    bool haveOwnTachometers; // else a pair has one count, of the slower
    CpldLine presence;       // of the first pair; the next pair's is behind it
};

/** When a line from a supply is set. */
enum class SupplyTells : uint8_t {
    Never,
    Plugged,
    Unplugged,
    InputGood,
    InputFailed, // while it is plugged
    OutputGood,
};

/** Power supplies whose state is told by lines of the CPLD. */
struct SupplyWiring {
    uint8_t count;
    bool haveBus; // plugged in, with an EEPROM and PMBus
    SupplyTells presence, type;
    SupplyTells status[3];
};

struct Model {
    uint16_t devId;
    const char *description;
    // Places of the front panel.
    uint8_t copperPorts = 0;
    uint8_t sfpPorts = 0; // cages that take the place of copper ports
    uint8_t uplinks = 0;  // SFP cages
    /**
     * Whether the uplinks have wires for receive loss and transmit fault. Programs look for them
     * where presence and transmit disable are on boards that do not.
     */
    bool haveUplinkStatusLines = true;
    uint8_t poePorts = 0; // 0: no PoE controller
    PoeChip poeChip = PoeChip::Rtl8239;
    bool hasClock = false; // a calendar clock with a battery
    FanWiring fans;
    SupplyWiring supplies;

    /**
     * Whether the presence of fans 1 and 2, and of fans 3 and 4, is told by the lines that tell
     * that of supplies 1 and 2. Such a line shows what has changed last, and the supply at first.
     */
    constexpr bool haveSharedPresenceLines() const {
        return fans.count != 0 && fans.presence.reg == kSupplyPresence.reg;
    }
};

constexpr uint32_t kMostPorts = 54; // of a panel

/** The catalogue: models.cpp, or what a build for other boards has in its place. */
extern const std::span<const Model> kModels;

/** The model of a device id, or null. */
const Model *findModel(uint32_t devId);

} // namespace vb
