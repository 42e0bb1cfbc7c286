#pragma once
// Whether a flash partition holds what it should.

#include "iodbg/flash/content.h"
#include "iodbg/flash/partition.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace iodbg {

enum class Layout {
    Straight,        // byte for byte
    AroundBadBlocks, // what would lie in a bad block lies in the next good one
};

/** How content and partition compare. */
struct Comparison {
    struct Difference {
        uint64_t offset; // in the content
        uint64_t place;  // in the partition
        uint8_t wanted;
        std::optional<uint8_t> stored; // nothing when the partition has ended
    };

    std::optional<Difference> first;
    uint64_t differing = 0;         // bytes
    std::vector<int64_t> badBlocks; // below the content, by number
};

/** Compares the whole content. reached is told how many bytes have been compared. */
Comparison compare(const FlashPartition &partition, const Content &content, Layout layout,
                   const std::function<void(uint64_t)> &reached);

/** Where content and partition differ, and what is known of the reason. */
std::string differenceText(const FlashPartition &partition, const Content &content,
                           const Comparison &comparison);

} // namespace iodbg
