#include "virtual_board/devices/flash.h"

#include <algorithm>

namespace vb {

namespace {

constexpr uint32_t kChunk = 2048; // programmed at once; a divisor of every erase block's size
constexpr uint32_t kLowestEraseSize = 4096;
constexpr uint32_t kHighestEraseSize = 1 << 19;
constexpr uint32_t kHighestPageSize = 16384;
constexpr uint32_t kHighestSpareSize = 2048;
constexpr uint32_t kPartsOfPage = 4;
constexpr uint32_t kLowestPartSize = 512;
constexpr uint32_t kProgramBuffer = 256; // of NOR chips

// NOR on a serial bus of 50 MHz; NAND of one bit in a cell, its pages taken over an 8-bit bus.
constexpr FlashTimes kNorTimes = {.readUs = 40, .programUs = 700, .eraseUs = 500000};
constexpr FlashTimes kNandTimes = {.readUs = 80, .programUs = 300, .eraseUs = 2000};

constexpr bool isPowerOfTwo(uint32_t number) {
    return number != 0 && (number & (number - 1)) == 0;
}

bool isInside(const Flash &flash, uint64_t offset, uint64_t length) {
    return offset < flash.geometry.size && length <= flash.geometry.size - offset;
}

} // namespace

uint32_t flashProgramUnit(const FlashGeometry &geometry) {
    return std::min(geometry.pageSize, std::max(geometry.pageSize / kPartsOfPage, kLowestPartSize));
}

const FlashTimes &flashTimes(FlashType type) {
    return type == FlashType::Nor ? kNorTimes : kNandTimes;
}

uint32_t flashChipPage(const FlashGeometry &geometry) {
    return std::max(geometry.pageSize, kProgramBuffer);
}

uint32_t flashBadBlocks(const Flash &flash) {
    return static_cast<uint32_t>(std::count(flash.isBad, flash.isBad + flashBlocks(flash), 1));
}

bool flashIsPossible(const FlashGeometry &geometry) {
    return (geometry.type == FlashType::Nor || geometry.type == FlashType::Nand) &&
           isPowerOfTwo(geometry.eraseSize) && geometry.eraseSize >= kLowestEraseSize &&
           geometry.eraseSize <= kHighestEraseSize && isPowerOfTwo(geometry.pageSize) &&
           geometry.pageSize <= kHighestPageSize && geometry.pageSize <= geometry.eraseSize &&
           geometry.size != 0 && geometry.size % geometry.eraseSize == 0 &&
           geometry.size / geometry.eraseSize <= kFlashMaxBlocks &&
           geometry.spareSize <= kHighestSpareSize;
}

bool flashIsConsistent(const Flash &flash) {
    return flashIsPossible(flash.geometry) && flash.isWriteProtected <= 1 &&
           std::all_of(flash.isBad, flash.isBad + kFlashMaxBlocks,
                       [](uint8_t isBad) { return isBad <= 1; });
}

FlashStatus flashCheckProgram(const Flash &flash, uint64_t offset, uint64_t length) {
    if (!isInside(flash, offset, length))
        return FlashStatus::OutOfRange;
    if (flash.isWriteProtected != 0)
        return FlashStatus::Protected;
    const bool isWhole = (offset | length) % flashProgramUnit(flash.geometry) == 0;
    return flash.geometry.type == FlashType::Nor || isWhole ? FlashStatus::Done
                                                            : FlashStatus::Unaligned;
}

FlashStatus flashCheckErase(const Flash &flash, uint64_t offset, uint64_t length) {
    if (!isInside(flash, offset, length))
        return FlashStatus::OutOfRange;
    if (flash.isWriteProtected != 0)
        return FlashStatus::Protected;
    const bool isWhole = (offset | length) % flash.geometry.eraseSize == 0;
    return isWhole ? FlashStatus::Done : FlashStatus::Unaligned;
}

FlashStatus flashProgram(const FlashCells &cells, uint32_t offset, const uint8_t *data,
                         uint32_t length) {
    static uint8_t bytes[kChunk]; // one at a time works on a board, maybe on a small stack
    const uint32_t end = offset + length;
    while (offset < end) {
        const uint32_t count = std::min(end - offset, kChunk - offset % kChunk);
        if (!cells.load(cells.context, offset, bytes, count))
            return FlashStatus::CellsFailed;
        for (uint32_t i = 0; i < count; ++i)
            bytes[i] = static_cast<uint8_t>(bytes[i] & data[i]);
        if (!cells.store(cells.context, offset, bytes, count))
            return FlashStatus::CellsFailed;
        offset += count;
        data += count;
    }
    return FlashStatus::Done;
}

FlashStatus flashErase(Flash &flash, const FlashCells &cells, uint32_t offset, uint32_t length,
                       uint32_t limit) {
    const uint32_t end = offset + std::min(length, limit);
    while (offset < end) {
        const uint32_t block = flashBlockOf(flash, offset);
        if (flash.isBad[block] != 0)
            return FlashStatus::BadBlock;
        const uint32_t count = std::min(end - offset, flash.geometry.eraseSize);
        ++flash.erases[block];
        if (!cells.erase(cells.context, offset, count))
            return FlashStatus::CellsFailed;
        offset += count;
    }
    return FlashStatus::Done;
}

} // namespace vb
