#pragma once
// Flash partitions as all MTD tools handle them.

#include <cstdint>
#include <mtd/mtd-abi.h>
#include <string>

namespace flash_tools {

constexpr uint8_t kErased = 0xFF; // a byte

/** An open flash partition. */
class Partition {
  public:
    Partition(std::string tool, std::string path);
    Partition(const Partition &) = delete;
    Partition &operator=(const Partition &) = delete;
    ~Partition();

    /** Opens it and asks for its geometry; false, with errno, when one fails. */
    bool open(int flags);
    bool getInfo();

    const std::string &path() const { return path_; }
    const mtd_info_user &info() const { return info_; }
    uint32_t blockOf(uint64_t offset) const {
        return static_cast<uint32_t>(offset) / info_.erasesize;
    }

    /** 1 bad, 0 good, -1 (with errno) that cannot be told. */
    int isBad(uint64_t offset) const;
    bool markBad(uint64_t offset) const;
    // False, after a message, with errno.
    bool eraseBlocks(uint64_t offset, uint32_t count = 1) const;
    bool readPage(uint64_t offset, uint8_t *page) const;
    bool writePage(uint64_t offset, const uint8_t *page) const;

  private:
    bool failTransfer(const char *what, const char *direction, uint64_t offset) const;

    std::string tool_, path_;
    int fd_ = -1;
    mtd_info_user info_ = {};
};

} // namespace flash_tools
