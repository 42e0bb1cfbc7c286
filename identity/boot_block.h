#pragma once
// The block of boot settings, at the start of its partition.

#include <cstdint>

namespace bsp {

/** Reads the block; the buffer is untouched on failure. */
int32_t readBootBlock(uint8_t *block);

/** Erases the first erase block of the partition and writes the block into it. */
int32_t writeBootBlock(const uint8_t *block);

} // namespace bsp
