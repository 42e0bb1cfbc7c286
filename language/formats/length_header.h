#pragma once
// What stands in front of a file that is stored in a flash partition with its length: the length
// and a marker, big-endian.

#include "language/formats/byte_order.h"

#include <cstdint>

namespace formats {

constexpr uint32_t kLengthHeaderSize = 8;
constexpr uint32_t kLengthHeaderMarker = 0xA102A304;

/** The length of the file behind a header; 0 for an empty or foreign partition. */
constexpr uint32_t storedFileLength(const uint8_t *header, uint64_t partitionSize) {
    const uint32_t length = loadBe32(header);
    const bool isMarked = loadBe32(header + 4) == kLengthHeaderMarker;
    // An erased length, FFFFFFFF, fits into no partition.
    const bool fits = uint64_t{length} + kLengthHeaderSize <= partitionSize;
    return isMarked && fits ? length : 0;
}

constexpr void writeLengthHeader(uint8_t *header, uint32_t length) {
    storeBe32(header, length);
    storeBe32(header + 4, kLengthHeaderMarker);
}

} // namespace formats
