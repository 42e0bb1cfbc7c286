#pragma once
// One exchange with the PoE controller: a request frame, a wait, a reply frame.

#include "poe/rtl8239/port_map.h"

#include <cstdint>

extern "C" {
/** Writes length bytes to the controller. */
int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length);

/** Reads length bytes from the controller. */
int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length);

/** The 8-bit sum of length bytes; 0 for a null buffer or a length below 1. */
uint8_t rtl8239CmdChecksum(const uint8_t *buffer, int32_t length);

/** Whether a reply frame answers a request frame: both echoes and the checksum. */
int32_t rtl8239CmdResponseCheck(const uint8_t *request, const uint8_t *response);

/**
 * The raw exchange: no lock, and the frame is sent as it is. The request is length bytes, the
 * response buffer 12.
 */
int32_t rtl8239CmdMessage(const uint8_t *request, uint8_t *response, int32_t length);

/**
 * The exchange of every command: refuses the firmware loader's commands, takes the lock, fills in
 * sequence number and checksum. Both buffers are 12 bytes.
 */
int32_t rtl8239CmdMessageSafe(uint8_t *request, uint8_t *response);

/**
 * Opens the lock file and locks it; 0 when it cannot be opened. The result of locking is stored: 0,
 * or another value when it failed.
 */
int32_t bspPoeLockFileOpen(int32_t *lockResult);

/** Unlocks and closes what bspPoeLockFileOpen() answered; nothing for 0. */
void bspPoeLockFileClose(int32_t fd);

/**
 * The next sequence number, kept in the lock file's first byte. Without a descriptor it is counted
 * in *counter; without that too it is 0.
 */
uint8_t bspPoeSeqNumNext(int32_t fd, uint8_t *counter);

/** The port map of this board; null without a controller. */
const BspPoePortMap *bspPoeRtl8239PortMapGet(void);

/** Drives the controller's reset line, which is active low: value other than 0 holds it in reset.
 */
int32_t bspPoeRtl8239ResetSet(uint32_t value);
}
