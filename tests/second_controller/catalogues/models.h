#pragma once
// The models of this build.

#include "identity/board_catalogue.h"

#include <cstdint>

constexpr uint16_t kQuillModel = 0x7F09;
constexpr uint16_t kFamilyModel = 0x0809;
/** With the family's controller, on more ports than it has maps for. */
constexpr uint16_t kOddModel = 0x7C09;
/** The library believes it to have a controller that it has no driver for. */
constexpr uint16_t kStrangeModel = 0x7E09;
constexpr auto kStrangeChip = bsp::PoeChip{0x81};
/** The library drives its controller; iodbg has no guide to it. */
constexpr uint16_t kUnguidedModel = 0x7D09;
constexpr auto kUnguidedChip = bsp::PoeChip{0x82};
