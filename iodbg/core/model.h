#pragma once
// What the board's model has.

#include <cstdint>
#include <vector>

namespace bsp {
enum class PoeChip : uint8_t;
}

namespace iodbg {

/** What tells whether a fan is there. */
enum class FanPresence {
    Unknown, // nothing
    OwnLine,
    SuppliesLine, // a line that is a supply's presence line as well, and so tells nothing for sure
};

struct Model {
    uint32_t id = 0;
    bool isKnown = false;           // else it is driven like the simplest ones
    bool hasSupplyLines = false;    // its supplies' lines are in CPLD register 30
    bool hasSupplyReadings = false; // its supplies measure, and tell over PMBus
    uint32_t poePorts = 0;
    bsp::PoeChip poeChip{}; // what controls them
    uint32_t fans = 0;
    FanPresence fanPresence = FanPresence::Unknown;
    bool fansShareTachometer = false; // and the presence line, two of them
    bool hasClock = false;
    std::vector<uint32_t> cages; // ports with an SFP cage, in rising order
    /** From here on a cage's loss and fault lines are its presence and disable lines. */
    uint32_t firstCageWithoutStatus = UINT32_MAX;

    bool hasCageStatus(uint32_t port) const { return port < firstCageWithoutStatus; }
};

int32_t readModel(Model &model);

} // namespace iodbg
