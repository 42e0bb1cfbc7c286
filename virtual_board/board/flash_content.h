#pragma once
// The bytes of the flash partitions: one file for each in the board's folder. It holds the
// complement of the bytes, so that a hole of a sparse file is erased flash.

#include "virtual_board/board/folder.h"

namespace vb {

constexpr char kFlashFolder[] = "flash";

/** Name of a partition's file in the board's folder. */
struct FlashFileName {
    char text[32];
};
FlashFileName flashFileName(uint32_t index);

/** The open file of a partition. */
class FlashContent {
  public:
    FlashContent(const BoardFolder &folder, uint32_t index);
    FlashContent(const FlashContent &) = delete;
    FlashContent &operator=(const FlashContent &) = delete;
    ~FlashContent();

    bool load(uint32_t offset, uint8_t *data, uint32_t length) const;
    bool store(uint32_t offset, const uint8_t *data, uint32_t length) const;
    bool erase(uint32_t offset, uint32_t length) const;

    /** The next offset from one on that may be programmed; size of the file when there is none. */
    uint32_t nextProgrammed(uint32_t offset, uint32_t size) const;

    /** The same for the device's model, valid as long as this object. */
    FlashCells cells();

  private:
    bool isHole(uint32_t offset, uint32_t length) const;

    int fd_;
};

} // namespace vb
