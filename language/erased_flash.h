#pragma once
// Bytes of flash, most of which are erased in most units.

#include "language/bytes.h"

#include <cstdint>

namespace language {

/** Whether all bits are as erasing leaves them. */
bool isErased(ByteView bytes);

/** The CRC of bytes behind others, as formats::crc32. Erased ones take next to no time. */
uint32_t flashCrc32(uint32_t before, ByteView bytes);

} // namespace language
