#pragma once
// The steps of a firmware download, sent through the raw exchange by whoever holds the PoE lock.

#include <cstdint>

namespace bsp::rtl8239 {

// A block of an image, and where its frame says that it belongs.
constexpr int32_t kBlockSize = 32;
constexpr int32_t kBlockHeader = 4;
constexpr int32_t kBankSize = 0x10000;

} // namespace bsp::rtl8239

extern "C" {
int32_t rtl8239CmdJumpToLoader(void);
int32_t rtl8239CmdJumpToApp(void);
/** Streams an image to the loader, block by block. */
int32_t rtl8239CmdFirmwareDownload(const uint8_t *image, int32_t size);
}
