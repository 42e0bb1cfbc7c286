#pragma once
// The wires that lead to the PoE controller: its bus, its reset line; of its presence line bsp.h
// tells.

#include <cstdint>

extern "C" {
/** Writes length bytes to the controller. */
int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length);

/** Reads length bytes from the controller. */
int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length);

/** Drives the controller's reset line, which is active low: value other than 0 holds it in reset.
 */
int32_t bspPoeRtl8239ResetSet(uint32_t value);
}
