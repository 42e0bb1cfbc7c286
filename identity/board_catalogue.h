#pragma once
// What the library knows about each model of the family: one row per device id.

#include <cstdint>

namespace bsp {

/** Chassis family of a model; power supplies and their records follow from it. */
enum class ChassisClass : uint8_t {
    FourFan, // two supplies on CPLD register 30
    TwoFan,  // two supplies with EEPROM and PMBus, PoE controller
    Other,   // supplies counted in the board's record
};

/** How the fans are wired to the CPLD. */
struct Fans {
    uint8_t count;
    bool haveOwnTachometers;  // else both fans of a pair have the first one's
    uint8_t presenceRegister; // 0: the CPLD does not see whether a fan is there
    uint8_t presenceBit;      // of fans 1 and 2; the one behind it is of fans 3 and 4
};

/** SFP cages of consecutive ports, on consecutive channels of an I2C bus. */
struct CageRange {
    uint8_t firstPort;
    uint8_t ports; // 0: none
    uint8_t bus;
    uint8_t firstChannel;
};

/** Where the CPLD has the lines of the cages. */
struct CageLines {
    uint8_t frontPorts; // ports 1 to this one have registers of their own, 16 ports to each
    // The uplinks share registers, whose bits count from the first uplink on.
    uint8_t firstUplink;
    uint8_t uplinkStatusBit; // receive loss and transmitter fault of the first uplink
    // Ports whose lines are computed as those of uplinks; a port that is neither has none.
    uint32_t uplinksFrom;
    uint32_t uplinksTo;
};

struct BoardModel {
    uint32_t devId;
    ChassisClass chassis;
    uint8_t poePorts; // 0: no PoE controller
    bool hasClock;    // battery-backed clock chip
    Fans fans;
    CageRange frontCages;
    CageRange uplinkCages;
    CageLines cageLines;

    constexpr bool hasPoe() const { return poePorts != 0; }
};

/** The row of a device id; the row for unknown ids when it is in none. All 32 bits count. */
const BoardModel &boardModel(uint32_t devId);

} // namespace bsp

extern "C" {
/** 1 for the ids of the four-fan models, else 0. */
int32_t bspDevIsFourFanModel(uint32_t devId);
/** 1 for the ids of the two-fan models, else 0. */
int32_t bspDevIsTwoFanModel(uint32_t devId);
}
