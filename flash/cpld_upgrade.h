#pragma once
// The CPLD's upgrade.

#include <cstdint>

namespace bsp {

/** Hands an image file to the kernel module, which opens it and programs the CPLD. */
int32_t upgradeCpld(const char *file);

} // namespace bsp
