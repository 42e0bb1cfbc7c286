#pragma once
// Flash partitions as their drivers show them, byte for byte, past the library's own ways.

#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "language/erased_flash.h"
#include "support/mtd.h"
#include "support/owned.h"

#include <cstdint>
#include <span>
#include <string>
#include <sys/types.h>

namespace iodbg {

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
    /** "nand, 42467328 bytes, blocks of 131072, pages of 2048+64" */
    std::string geometryText() const;
    bool isWriteProtected() const { return (geometry_.flags & MTD_WRITEABLE) == 0; }
    size_t spareSize() const { return geometry_.oobsize; }
    /** "NOR", "NAND", or the driver's number for another kind. */
    std::string type() const;

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

using language::isErased;

} // namespace iodbg
