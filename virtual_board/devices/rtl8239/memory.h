#pragma once
// What the RTL8239 keeps, apart from its firmware.

#include "virtual_board/devices/rtl8239/settings.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kPoeChipRegisters = 64;

/** A register of a power-sourcing device that has been written through the controller. */
struct PoeChipRegister {
    uint32_t chip;
    uint32_t address;
    uint32_t value;
};

struct Rtl8239Memory {
    uint32_t chipRegisters;
    PoeChipRegister chipRegister[kPoeChipRegisters];
    PoeSettings settings;
    PoeSettings saved;
};

} // namespace vb
