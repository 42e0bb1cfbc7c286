#pragma once
// One exchange with the PoE controller: a request frame, a wait, a reply frame.

#include <cstdint>

extern "C" {
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
}
