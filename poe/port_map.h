#pragma once
// Which channels of which power-sourcing device serve a port.

#include "bsp.h"

#include <cstdint>

/** How one port is wired. */
struct BspPoePort {
    uint8_t deviceIndex; // power-sourcing device, 0-11
    uint8_t chipAddress; // its address; 0xFF when it is not fitted
    uint8_t primaryChannel;
    uint8_t secondaryChannel; // of a 4-pair port
    uint32_t pairType;        // 2: 4-pair
    uint32_t maxPower;        // milliwatts
};

/** What the controller is told of the board at initialisation. */
struct BspPoePortMap {
    BspPoePort port[BSP_POE_PORTS_MAX];
    uint8_t recordCount; // ports that the controller is told about
    uint8_t portCount;   // ports that the board has
    uint16_t padding;
    uint32_t powerBank;
    uint32_t totalPower; // milliwatts
};

constexpr uint32_t kFourPair = 2;

namespace bsp {

/** The port map of this board; null without a controller, and for a count of ports without a map.
 */
const BspPoePortMap *poePortMap();

} // namespace bsp
