#pragma once
// The wires of the board, under the names by which this controller's part of the interface has
// them.

#include "poe/port_map.h"

#include <cstdint>

extern "C" {
/** Writes length bytes to the controller. */
int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length);

/** Reads length bytes from the controller. */
int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length);

/** Drives the controller's reset line, which is active low: value other than 0 holds it in reset.
 */
int32_t bspPoeRtl8239ResetSet(uint32_t value);

/** The port map of this board; null without a controller. */
const BspPoePortMap *bspPoeRtl8239PortMapGet(void);
}
