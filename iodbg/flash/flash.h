#pragma once
// Flash partitions as their drivers show them, byte for byte, past the library's own ways.

#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/parse.h"
#include "support/mtd.h"
#include "support/owned.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace iodbg {

constexpr char kFlashDeviceHelp[] = "mtd0|mtd4|mtd12|mtd14, or the path of a device";

/** Stores the path of a partition's device. */
Parser flashDevice(std::string &path);

/** A partition, open for reading; its functions throw when the driver refuses. */
class FlashPartition {
  public:
    explicit FlashPartition(const std::string &device);

    const std::string &device() const { return device_; }
    uint64_t size() const { return geometry_.size; }
    size_t blockSize() const { return geometry_.erasesize; }
    /** A number that no other partition has, whatever name it was opened by. */
    off_t number() const;
    /** Whether this partition is the one of another name for a device. */
    bool isAt(const std::string &device) const;
    size_t pageSize() const { return geometry_.writesize; }

    void read(uint64_t offset, std::span<uint8_t> bytes) const;
    Bytes read(uint64_t offset, size_t length) const;
    /** Whether the block at an offset is marked bad. */
    bool isBad(uint64_t offset) const;
    /** Whether the whole block at an offset reads as erased. */
    bool isErased(uint64_t offset) const;

  private:
    Failure failure(const std::string &what) const;

    std::string device_;
    bsp::Descriptor file_;
    bsp::FlashGeometry geometry_ = {};
};

/** Whether bytes read as erased flash. */
bool isErased(ByteView bytes);

/** What a partition should hold from its start on: some bytes, and a file behind them. */
struct Content {
    Bytes front;
    std::string file;
    uint64_t fileSize;

    uint64_t size() const { return front.size() + fileSize; }
};

/** The size of a file on the host; throws for one that cannot be read or is empty. */
uint64_t hostFileSize(const std::string &path);

/** A part of the content; throws when the file does not give it. */
Bytes readContent(const Content &content, uint64_t offset, size_t length);

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
