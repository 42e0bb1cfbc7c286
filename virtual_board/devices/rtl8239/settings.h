#pragma once
// What the RTL8239's application is told by its commands.

#include "virtual_board/devices/poe_port.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kPoeBanks = 8;
constexpr uint32_t kPoeChips = 12; // power-sourcing devices behind the controller

constexpr uint8_t kPoeNone = 0xFF; // a channel or chip that is not there, an unused byte

// Function modes: who takes a port from detection to power.
constexpr uint8_t kPoeAutomatic = 0;     // the controller
constexpr uint8_t kPoeSemiAutomatic = 1; // the controller up to the class; power on command
constexpr uint8_t kPoeManual = 2;        // nobody: each step is triggered

constexpr uint8_t kPoeEnablePower = 2;  // enable value: switched on, semi-automatic ports too
constexpr uint8_t kPoeDetectLegacy = 1; // detection type: devices older than the standard as well
constexpr uint8_t kPoeLimitFixed = 2;   // limit type: the set value; 1: by class

struct PoePortSettings {
    uint8_t enable; // 0: off, 1: on, 2: power on
    uint8_t funcMode;
    uint8_t detType;
    uint8_t inrushMode;
    uint8_t forceInrush;
    uint8_t disconnectType; // 0: a port stays powered when its device is gone
    uint8_t limitType;
    uint8_t limit;    // in 400 milliwatts
    uint8_t priority; // 0 is the least important
    uint8_t isMapped;
    uint8_t isFourPair;
    uint8_t chip;
    uint8_t primaryChannel;
    uint8_t secondaryChannel;
    uint8_t chipAddress; // kPoeNone: not fitted
    uint8_t padding;
};

/** A source of power, in 100 milliwatts. What is held in reserve is not given to ports. */
struct PoeBank {
    uint16_t power;
    uint16_t reserve;
};

struct PoeSettings {
    uint8_t isEnabled; // all ports
    uint8_t isMappingEnabled;
    uint8_t portCount;
    uint8_t lowThreshold, highThreshold; // voltage limits as codes
    uint8_t pmMode;
    uint8_t pmModeExt;
    uint8_t eventMask;
    PoeBank bank[kPoeBanks]; // bank 0 is the one that this board's supplies feed
    PoePortSettings port[kPoePorts];
};

// Power management modes.
constexpr uint8_t kPoeHighestPm = 4;
constexpr uint8_t kPoePmNone = 0; // every request is granted
// 1 and 2 serve by priority, 3 and 4 first come, first served; 1 and 3 count what devices asked
// for, 2 and 4 what they draw.
constexpr bool poeCountsDrawn(uint8_t pmMode) {
    return pmMode == 2 || pmMode == 4;
}
constexpr bool poeServesByPriority(uint8_t pmMode) {
    return pmMode == 1 || pmMode == 2;
}

constexpr uint32_t kPoePowerUnit = 100; // milliwatts, of banks and totals
constexpr uint32_t kPoeLimitUnit = 400; // milliwatts, of port limits

/** What the application starts with when nothing is saved: no port is mapped or enabled. */
void poeSetDefaults(PoeSettings &settings);

/** How far a port goes without being triggered. */
PoeGoal poeGoalOf(const PoePortSettings &port);

/** Whether settings are such as the application takes. */
bool poeIsConsistent(const PoeSettings &settings);

/** What a port starts with, apart from its mapping. */
void poeSetPortDefaults(PoePortSettings &port);

} // namespace vb
