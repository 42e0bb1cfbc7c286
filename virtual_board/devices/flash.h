#pragma once
// A flash partition: erasing a block sets all its bits, programming clears bits. Where the bits are
// kept is the board's business.

#include <cstdint>

namespace vb {

enum class FlashType : uint32_t {
    Nor,  // programmed in any length, from any offset
    Nand, // programmed in pages or quarters of them; blocks may be bad
};

struct FlashGeometry {
    FlashType type;
    uint32_t size, eraseSize, pageSize, spareSize; // in bytes
};

/** How long the chip of a partition works, as data sheets tell it of usual ones. */
struct FlashTimes {
    uint32_t readUs, programUs; // of a page
    uint32_t eraseUs;           // of a block
};

/** Whether that time passes. */
enum class FlashTiming : uint32_t { Off, Usual };

constexpr uint32_t kFlashMaxBlocks = 2048;

struct Flash {
    FlashGeometry geometry;
    uint32_t isWriteProtected;
    uint32_t erases[kFlashMaxBlocks]; // of each block, since the board was made
    uint8_t isBad[kFlashMaxBlocks];
};

/** The storage of a partition's bytes. Each function is false when the storage fails. */
struct FlashCells {
    void *context;
    bool (*load)(void *context, uint32_t offset, uint8_t *data, uint32_t length);
    bool (*store)(void *context, uint32_t offset, const uint8_t *data, uint32_t length);
    bool (*erase)(void *context, uint32_t offset, uint32_t length);
};

enum class FlashStatus {
    Done,
    OutOfRange,
    Unaligned, // not whole erase blocks; NAND: not whole parts of pages
    Protected,
    BadBlock,
    CellsFailed,
};

constexpr uint32_t flashBlocks(const Flash &flash) {
    return flash.geometry.size / flash.geometry.eraseSize;
}

constexpr uint32_t flashBlockOf(const Flash &flash, uint32_t offset) {
    return offset / flash.geometry.eraseSize;
}

/**
 * What NAND is programmed in: chips take the quarters of a page one by one, each with its own error
 * correction, which needs 512 bytes or more.
 */
uint32_t flashProgramUnit(const FlashGeometry &geometry);
uint32_t flashBadBlocks(const Flash &flash);

const FlashTimes &flashTimes(FlashType type);

/** What the chip reads and programs at once: no driver's page is smaller than a NOR chip's buffer.
 */
uint32_t flashChipPage(const FlashGeometry &geometry);

/** Whether a partition can have a geometry. */
bool flashIsPossible(const FlashGeometry &geometry);
/** Whether a partition's state is one that the functions below can work with. */
bool flashIsConsistent(const Flash &flash);

/** Whether bytes can be programmed, or blocks erased, as far as address and protection go. */
FlashStatus flashCheckProgram(const Flash &flash, uint64_t offset, uint64_t length);
FlashStatus flashCheckErase(const Flash &flash, uint64_t offset, uint64_t length);

/**
 * Programs bytes: bits are cleared, none is set. A bad block takes its bytes like any other: it is
 * for the users of flash to keep away from it. As it cannot be erased, bytes that go there twice
 * are lost.
 */
FlashStatus flashProgram(const FlashCells &cells, uint32_t offset, const uint8_t *data,
                         uint32_t length);

/**
 * Erases whole blocks up to the first bad one, but no more than limit bytes: then the power is
 * gone.
 */
FlashStatus flashErase(Flash &flash, const FlashCells &cells, uint32_t offset, uint32_t length,
                       uint32_t limit);

} // namespace vb
