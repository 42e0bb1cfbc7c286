#pragma once
// Flash of a twin.

#include "virtual_board/devices/flash.h"

#include <cstdint>
#include <string>

namespace vb {

/** What "nand, 262144 bytes, blocks of 131072, pages of 2048+64" says; others throw Refused. */
FlashGeometry parseGeometryText(const std::string &text);

/** Four bytes that, behind bytes of one CRC-32, lead to another. */
uint32_t bytesBetween(uint32_t crcBefore, uint32_t crcBehind);

} // namespace vb
