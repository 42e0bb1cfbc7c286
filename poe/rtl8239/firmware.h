#pragma once
// The steps of a firmware download, sent through the raw exchange by whoever holds the PoE lock.

#include <cstdint>

extern "C" {
int32_t rtl8239CmdJumpToLoader(void);
int32_t rtl8239CmdJumpToApp(void);
/** Streams an image to the loader, block by block. */
int32_t rtl8239CmdFirmwareDownload(const uint8_t *image, int32_t size);
}
