#include "virtual_board/flash_tools/partition.h"

#include "virtual_board/flash_tools/tools.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace flash_tools {

namespace {

constexpr char kLibrary[] = "libmtd"; // whose messages appear with those of the tools

/** The digits of /dev/mtdN. */
std::string numberOf(const std::string &path) {
    const size_t digits = path.find_last_not_of("0123456789") + 1;
    return path.substr(digits);
}

} // namespace

Partition::Partition(std::string tool, std::string path)
    : tool_(std::move(tool)), path_(std::move(path)) {}

Partition::~Partition() {
    if (fd_ >= 0)
        close(fd_);
}

bool Partition::open(int flags) {
    fd_ = ::open(path_.c_str(), flags | O_CLOEXEC);
    return fd_ >= 0;
}

bool Partition::getInfo() {
    return ioctl(fd_, MEMGETINFO, &info_) == 0 && info_.erasesize != 0 && info_.writesize != 0;
}

int Partition::isBad(uint64_t offset) const {
    if (offset >= info_.size) {
        complain(kLibrary, "bad eraseblock number %u, mtd%s has %u eraseblocks", blockOf(offset),
                 numberOf(path_).c_str(), info_.size / info_.erasesize);
        errno = EINVAL;
        return -1;
    }
    auto position = static_cast<int64_t>(offset);
    return ioctl(fd_, MEMGETBADBLOCK, &position);
}

bool Partition::markBad(uint64_t offset) const {
    auto position = static_cast<int64_t>(offset);
    return ioctl(fd_, MEMSETBADBLOCK, &position) == 0;
}

bool Partition::eraseBlocks(uint64_t offset, uint32_t count) const {
    erase_info_user64 blocks = {offset, uint64_t{count} * info_.erasesize};
    if (ioctl(fd_, MEMERASE64, &blocks) == 0)
        return true;
    complainSystem(kLibrary, "MEMERASE64 ioctl failed for eraseblock %u (mtd%s)", blockOf(offset),
                   numberOf(path_).c_str());
    return false;
}

bool Partition::failTransfer(const char *what, const char *direction, uint64_t offset) const {
    complainSystem(kLibrary, "cannot %s %u bytes %s mtd%s (eraseblock %u, offset %u)", what,
                   info_.writesize, direction, numberOf(path_).c_str(), blockOf(offset),
                   static_cast<uint32_t>(offset % info_.erasesize));
    return false;
}

bool Partition::readPage(uint64_t offset, uint8_t *page) const {
    const auto position = static_cast<off_t>(offset);
    uint32_t done = 0;
    bool isGood = lseek(fd_, position, SEEK_SET) == position;
    while (isGood && done < info_.writesize) {
        const ssize_t count = read(fd_, page + done, info_.writesize - done);
        isGood = count > 0;
        done += isGood ? static_cast<uint32_t>(count) : 0;
    }
    return isGood || failTransfer("read", "from", offset);
}

bool Partition::writePage(uint64_t offset, const uint8_t *page) const {
    const auto position = static_cast<off_t>(offset);
    const auto size = static_cast<ssize_t>(info_.writesize);
    return (lseek(fd_, position, SEEK_SET) == position &&
            write(fd_, page, info_.writesize) == size) ||
           failTransfer("write", "to", offset);
}

} // namespace flash_tools
