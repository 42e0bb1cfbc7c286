#include "iodbg/flash/partition.h"

#include "iodbg/core/device_node.h"
#include "iodbg/core/host_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace iodbg {

namespace {

/** Every second device is the partition before it, for reading only. */
off_t partitionNumber(const struct stat &device) {
    constexpr uint64_t kLargest = 0x3FFFFFFF; // a file's offset in 32 bits, and room below it
    const uint64_t number = S_ISCHR(device.st_mode) ? minor(device.st_rdev) / 2 : device.st_ino;
    return static_cast<off_t>(number & kLargest);
}

} // namespace

FlashPartition::FlashPartition(const std::string &device)
    : device_(device), file_(open(device.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!file_.isOpen())
        throw failure("open " + device);
    if (bsp::queryGeometry(file_.get(), geometry_) < 0 || geometry_.erasesize == 0)
        throw failure("ask " + device + " for its sizes");
}

std::string FlashPartition::geometryText() const {
    const char *type = geometry_.type == MTD_NANDFLASH  ? "nand"
                       : geometry_.type == MTD_NORFLASH ? "nor"
                                                        : "other";
    const std::string text = std::string(type) + ", " + std::to_string(geometry_.size) +
                             " bytes, blocks of " + std::to_string(geometry_.erasesize) +
                             ", pages of " + std::to_string(geometry_.writesize);
    return geometry_.oobsize != 0 ? text + "+" + std::to_string(geometry_.oobsize) : text;
}

off_t FlashPartition::number() const {
    struct stat info = {};
    if (fstat(file_.get(), &info) != 0)
        throw failure("ask for the number of " + device_);
    return partitionNumber(info);
}

bool FlashPartition::isAt(const std::string &device) const {
    struct stat other = {};
    return stat(device.c_str(), &other) == 0 && partitionNumber(other) == number();
}

std::string FlashPartition::type() const {
    switch (geometry_.type) {
    case MTD_NORFLASH:
        return "NOR";
    case MTD_NANDFLASH:
    case MTD_MLCNANDFLASH:
        return "NAND";
    default:
        return "type " + std::to_string(geometry_.type);
    }
}

Failure FlashPartition::failure(const std::string &what) const {
    const std::string reason = std::strerror(errno);
    const DeviceNode node = {device_, file_.isOpen() ? 0 : errno};
    return {ExitCode::Board, "cannot " + what + ": " + reason,
            node.state() == NodeState::Missing || node.state() == NodeState::NotPermitted
                ? node.advice()
                : "check that it is a flash partition, and the kernel log for flash errors"};
}

void FlashPartition::read(uint64_t offset, std::span<uint8_t> bytes) const {
    if (!readAt(file_.get(), offset, bytes))
        throw failure("read " + device_ + " at " + hexNumber(static_cast<uint32_t>(offset), 1));
}

Bytes FlashPartition::read(uint64_t offset, size_t length) const {
    Bytes bytes(length);
    read(offset, bytes);
    return bytes;
}

bool FlashPartition::isBad(uint64_t offset) const {
    auto place = static_cast<int64_t>(offset / blockSize() * blockSize());
    const int answer = ioctl(file_.get(), MEMGETBADBLOCK, &place);
    if (answer < 0 && errno != EOPNOTSUPP) // NOR flash has no bad blocks
        throw failure("ask " + device_ + " for bad blocks");
    return answer > 0;
}

bool FlashPartition::isErased(uint64_t offset) const {
    return iodbg::isErased(read(offset / blockSize() * blockSize(), blockSize()));
}

} // namespace iodbg
