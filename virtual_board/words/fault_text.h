#pragma once
// Fault rules in words.

#include "virtual_board/board/faults.h"
#include "virtual_board/devices/board_map.h"

#include <string>

namespace vb {

/** The parts of a rule as the command line has them, in the words of fault_table.h. */
struct FaultWords {
    std::string device;
    std::string op = "any";
    std::string offset;    // empty: every one
    std::string nth = "1"; // which matching request
    std::string when = "once";
    std::string effect;
};

/** The rule that the words stand for. Words that make no rule that could ever fire throw Refused.
 */
FaultRule parseFault(const FaultWords &words);

FaultWords faultWords(const FaultRule &rule);

/** One device of the I2C buses: "i2c:0.0.0x51". */
std::string i2cDeviceText(uint32_t bus, uint32_t channel, uint32_t devAddr);

inline std::string busText(const I2cPlace &place) {
    return i2cDeviceText(place.bus, place.channel, place.device);
}

/** A rule as arguments of `vboard fault add`. */
std::string faultText(const FaultRule &rule);

/** Its effect alone: "corrupt=0:0x80". */
std::string effectText(const FaultRule &rule);

} // namespace vb
