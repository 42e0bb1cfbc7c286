#pragma once
// What the library knows about each model of the family: one row per device id.

#include <cstdint>

namespace bsp {

/** How the fans are wired to the CPLD. */
struct Fans {
    uint8_t count;
    bool haveOwnTachometers;  // else both fans of a pair have the first one's
    uint8_t presenceRegister; // 0: the CPLD does not see whether a fan is there
    uint8_t presenceBit;      // of fans 1 and 2; the one behind it is of fans 3 and 4
};

/** A status that a supply has while lines of it are set. */
struct SupplyRule {
    uint8_t lines; // all of these, counted from the supply's type line on
    uint8_t status;
};

/** The power supplies, and what tells of them. */
struct Supplies {
    uint8_t count; // 0: the board's record has their number and types, and no line their status
    uint8_t presenceRegister;
    uint8_t presenceBit; // of supply 1
    bool isPresenceActiveLow;
    bool haveBus;         // with an EEPROM that has a record of the supply, and live readings
    SupplyRule status[4]; // the first one that fits; ends with a rule without lines
};

/** SFP cages of consecutive ports, on consecutive channels of an I2C bus. */
struct CageRange {
    uint8_t firstPort;
    uint8_t ports; // 0: none
    uint8_t bus;
    uint8_t firstChannel;
};

/** Kind of the PoE controller. Numbers from 0x80 on are free for controllers that a build adds. */
enum class PoeChip : uint8_t { None, Rtl8239 };

struct BoardModel {
    uint16_t devId;
    PoeChip poeChip = PoeChip::None;
    uint8_t poePorts = 0;
    bool hasClock = false; // battery-backed clock chip
    Fans fans;
    Supplies supplies;
    CageRange frontCages = {}; // with registers of their own; the uplinks share theirs
    CageRange uplinkCages;
    bool haveUplinkStatusLines =
        true; // else loss and fault are read where presence and disable are
    bool havePortsBehindUplinks =
        true; // lines are computed for them as for uplinks; else they have none

    constexpr bool hasPoe() const { return poeChip != PoeChip::None; }
};

constexpr uint32_t kNoDevId = 0; // of the row behind the family's, which is for all unknown ids

/** The catalogue: board_catalogue.cpp, or what a build for other boards has in its place. */
extern const BoardModel kBoardModels[];

/** The row of a device id; the row for unknown ids when it is in none. All 32 bits count. */
const BoardModel &boardModel(uint32_t devId);

} // namespace bsp

// The two classes by which the family's papers tell its models apart, for programs that have the
// library in themselves. The library does not ask for them: what models differ in is in the rows.
extern "C" {
/** 1 for the ids of the four-fan models, else 0. */
int32_t bspDevIsFourFanModel(uint32_t devId);
/** 1 for the ids of the two-fan models, else 0. */
int32_t bspDevIsTwoFanModel(uint32_t devId);
}
