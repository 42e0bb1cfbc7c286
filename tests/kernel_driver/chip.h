#pragma once
// The NAND chip that the kernel simulates, with the partitions of a board.

#include "tests/kernel_driver/check.h"

constexpr uint32_t kPageSize = 2048;
constexpr uint32_t kBlockSize = 131072;
constexpr uint8_t kErased = 0xFF;

// The partitions' sizes in erase blocks.
constexpr uint32_t kBootBlocks = 8;     // /dev/mtd0
constexpr uint32_t kSettingsBlocks = 2; // /dev/mtd4
constexpr uint32_t kBankBlocks = 324;   // /dev/mtd12 and /dev/mtd14
constexpr uint32_t kBankSize = kBankBlocks * kBlockSize;

/** Where a bank has the copy of its image's header block: behind the largest image. */
constexpr uint32_t kHeaderAt = 0x2700000;

/** One parameter of the simulation that makes something fail, or take long. */
struct ChipFault {
    std::string parameter, value;
};

/** A block that is marked bad, as some are when a chip leaves its factory. */
ChipFault badBlock(uint32_t partition, uint32_t block);
/** A block that can be erased so many times, and then no more. */
ChipFault weakBlock(uint32_t partition, uint32_t block, uint32_t erases);
/** A page that can be written so many times; then writing it fails. */
ChipFault weakPage(uint32_t partition, uint32_t page, uint32_t writes);
/** A page that can be read so many times, and is unreadable from then on. */
ChipFault lostPage(uint32_t partition, uint32_t page, uint32_t reads);

/** A chip that takes its time for each page and block, as real ones do. */
ChipFault slowness();

/** The simulated chip, erased, from here to the end of the block. */
class Chip {
  public:
    /** The blocks of /dev/mtd14 can be fewer than those of the other bank. */
    explicit Chip(const std::vector<ChipFault> &faults = {},
                  uint32_t secondBankBlocks = kBankBlocks);
    Chip(const Chip &) = delete;
    Chip &operator=(const Chip &) = delete;
    ~Chip();
};

/** "/dev/mtd4" */
std::string deviceOf(uint32_t partition);

// Straight to the driver, without the library.
/** The errno of a write at an offset; 0 when it wrote everything. */
int writeDevice(uint32_t partition, uint32_t offset, const Bytes &data);
/** The errno of erasing one block; 0 when it is erased. */
int eraseBlock(uint32_t partition, uint32_t block);
/** What the cells hold, without the driver's correction of errors. */
Bytes readCells(uint32_t partition, uint32_t offset, uint32_t length);
/** Reads a page as the library does; how many errors the driver found and could not correct. */
uint32_t errorsRead(uint32_t partition, uint32_t offset);
/** Fills a partition with pages that an erase must remove. */
void fillPartition(uint32_t partition, uint32_t blocks);
