#pragma once
// PoE ports and what is plugged into them, in words.

#include "virtual_board/devices/poe_controller.h"

#include <string>

namespace vb {

/** "class=4 signature=good requests=25500 draws=18000", or "none". */
std::string deviceText(const PoweredDevice &device);

/** The device that such a text describes; left out parts are usual ones. Others throw Refused. */
PoweredDevice parseDevice(const std::string &text);

std::string phaseText(PoePhase phase);

} // namespace vb
