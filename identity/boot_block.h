#pragma once
// The block of boot settings: the first 256 bytes of its partition.

#include <cstddef>
#include <cstdint>

namespace bsp {

constexpr size_t kBootBlockSize = 256;

/** Reads the block; the buffer is untouched on failure. */
int32_t readBootBlock(uint8_t *block);

/** Erases the first erase block of the partition and writes the block into it. */
int32_t writeBootBlock(const uint8_t *block);

} // namespace bsp
