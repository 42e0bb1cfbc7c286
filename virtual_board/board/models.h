#pragma once
// The hardware of each model, from its circuit diagrams: what the virtual board is built of. It is
// kept apart from the library's own board table on purpose, so that a mistake in one shows.

#include <cstdint>

namespace vb {

/** How supplies whose state is told by lines of the CPLD are wired to it. */
enum class SupplyLines : uint8_t { None, FourFan, TwoFan };

struct Model {
    uint16_t devId;
    const char *description;
    bool hasSupplyEeproms; // two plug-in supplies, each with an EEPROM
    uint8_t poePorts;      // 0: no PoE controller
    SupplyLines supplyLines;
    // Places of the front and back panel.
    uint8_t copperPorts;
    uint8_t sfpPorts; // cages that take the place of copper ports
    uint8_t uplinks;  // SFP cages
    uint8_t fans;
    bool hasClock; // a calendar clock with a battery
};

constexpr uint32_t kMostPorts = 54; // of a panel

constexpr unsigned kModelCount = 14;
extern const Model kModels[kModelCount];

/** The model of a device id, or null. */
const Model *findModel(uint32_t devId);

} // namespace vb
