#pragma once
// The flash partitions in words: geometry, wear, bad blocks, and what is recognised in their bytes.

#include "virtual_board/board/folder.h"

#include <array>
#include <string>
#include <vector>

namespace vb {

/** What one partition is and holds. The caller holds the board's lock. */
struct FlashSummary {
    uint32_t number;
    FlashGeometry geometry;
    uint32_t leastErases, mostErases; // of one block
    uint64_t totalErases;
    std::vector<uint32_t> badBlocks;
    bool isWriteProtected;
    uint32_t programmedPages; // that hold anything but 0xFF
    std::vector<std::string> contents;
};

FlashSummary flashSummary(const BoardFolder &folder, uint32_t index);

const char *flashTypeText(FlashType type);

/** "nand, 42467328 bytes, blocks of 131072, pages of 2048+64". */
std::string flashGeometryText(const FlashGeometry &geometry);

using FlashGeometries = std::array<FlashGeometry, kFlashPartitions>;

/**
 * Changes the geometry of a partition as told by "4:size=262144,erase=131072,page=2048,type=nand";
 * what is not named stays. Throws Refused when that makes no partition.
 */
void changeGeometry(FlashGeometries &all, const std::string &text);

/** The partition of a number, or Refused. */
uint32_t flashIndexOf(uint32_t number);

} // namespace vb
