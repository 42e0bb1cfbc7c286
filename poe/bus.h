#pragma once
// The wires that lead to the controller: its bus, its reset line. Its presence line is
// presence.h's.

#include <cstdint>

namespace bsp {

/** Writes bytes to the controller; BSP_E_POE_UNAVAILABLE on models without one, BSP_E_POE_WRITE. */
int32_t poeWrite(const uint8_t *buffer, int32_t length);

/** Reads bytes from the controller; BSP_E_POE_UNAVAILABLE on models without one, BSP_E_POE_READ. */
int32_t poeRead(uint8_t *buffer, int32_t length);

/** Drives the controller's reset line, which is active low. */
int32_t poeHoldInReset(bool isHeld);

} // namespace bsp
