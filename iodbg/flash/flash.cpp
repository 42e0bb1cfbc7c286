#include "iodbg/flash/flash.h"

#include "iodbg/core/device_node.h"
#include "iodbg/core/host_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr const char *kPartitions[] = {"mtd0", "mtd4", "mtd12", "mtd14"};

/** Reads so many bytes; false, with the reason in errno, when they are not there. */
bool readAt(int file, uint64_t offset, std::span<uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count == 0)
            errno = ENODATA;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
        offset += static_cast<uint64_t>(count);
    }
    return true;
}

/** The content's bytes, piece by piece. */
class ContentReader {
  public:
    explicit ContentReader(const Content &content)
        : content_(content), file_(open(content.file.c_str(), O_RDONLY | O_CLOEXEC)) {}

    void read(uint64_t offset, std::span<uint8_t> bytes) const {
        const size_t front = content_.front.size();
        while (!bytes.empty() && offset < front) {
            bytes[0] = content_.front[static_cast<size_t>(offset++)];
            bytes = bytes.subspan(1);
        }
        if (!file_.isOpen() || !readAt(file_.get(), offset - front, bytes))
            throw Failure::file("read " + content_.file,
                                "what is in flash could not be compared with it");
    }

  private:
    const Content &content_;
    bsp::Descriptor file_;
};

/** Every second device is the partition before it, for reading only. */
off_t partitionNumber(const struct stat &device) {
    constexpr uint64_t kLargest = 0x3FFFFFFF; // a file's offset in 32 bits, and room below it
    const uint64_t number = S_ISCHR(device.st_mode) ? minor(device.st_rdev) / 2 : device.st_ino;
    return static_cast<off_t>(number & kLargest);
}

void note(Comparison &comparison, const Comparison::Difference &difference) {
    if (!comparison.first)
        comparison.first = difference;
    ++comparison.differing;
}

/** Steps over bad blocks, each of which is noted. */
uint64_t behindBadBlocks(const FlashPartition &partition, uint64_t place, Comparison &comparison) {
    while (place < partition.size() && partition.isBad(place)) {
        comparison.badBlocks.push_back(static_cast<int64_t>(place / partition.blockSize()));
        place += partition.blockSize();
    }
    return place;
}

} // namespace

Parser flashDevice(std::string &path) {
    return [&path](const std::string &word) {
        const auto *const known = std::find(std::begin(kPartitions), std::end(kPartitions), word);
        if (known == std::end(kPartitions) && word.find('/') == std::string::npos)
            throw std::invalid_argument("'" + word +
                                        "' is none of mtd0|mtd4|mtd12|mtd14, and no "
                                        "path of a device");
        path = known == std::end(kPartitions) ? word : "/dev/" + word;
    };
}

FlashPartition::FlashPartition(const std::string &device)
    : device_(device), file_(open(device.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!file_.isOpen())
        throw failure("open " + device);
    if (bsp::queryGeometry(file_.get(), geometry_) < 0 || geometry_.erasesize == 0)
        throw failure("ask " + device + " for its sizes");
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

bool isErased(ByteView bytes) {
    constexpr uint8_t kErased = 0xFF;
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == kErased; });
}

uint64_t hostFileSize(const std::string &path) {
    requireNamedFile(path);
    struct stat info = {};
    const bsp::Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen() || fstat(file.get(), &info) != 0)
        throw Failure::file("open " + path, "give a file that can be read");
    if (!S_ISREG(info.st_mode))
        throw Failure(ExitCode::Host, path + " is not a regular file; give the right file");
    if (info.st_size == 0)
        throw Failure(ExitCode::Host, path + " is empty; give the right file");
    return static_cast<uint64_t>(info.st_size);
}

Bytes readContent(const Content &content, uint64_t offset, size_t length) {
    Bytes bytes(length);
    ContentReader(content).read(offset, bytes);
    return bytes;
}

Comparison compare(const FlashPartition &partition, const Content &content, Layout layout,
                   const std::function<void(uint64_t)> &reached) {
    const ContentReader reader(content);
    Comparison comparison;
    Bytes wanted(partition.blockSize());
    Bytes stored(partition.blockSize());
    uint64_t place = 0;
    uint64_t offset = 0;
    while (offset < content.size()) {
        if (layout == Layout::AroundBadBlocks)
            place = behindBadBlocks(partition, place, comparison);
        const auto count =
            static_cast<size_t>(std::min<uint64_t>(partition.blockSize(), content.size() - offset));
        const auto onDevice =
            static_cast<size_t>(std::min<uint64_t>(count, partition.size() - place));
        reader.read(offset, {wanted.data(), count});
        partition.read(place, {stored.data(), onDevice});
        for (size_t i = 0; i < count; ++i) {
            if (i >= onDevice)
                note(comparison, {offset + i, place + i, wanted[i], {}});
            else if (wanted[i] != stored[i])
                note(comparison, {offset + i, place + i, wanted[i], stored[i]});
        }
        offset += count;
        place += onDevice;
        reached(offset);
    }
    return comparison;
}

std::string differenceText(const FlashPartition &partition, const Content &content,
                           const Comparison &comparison) {
    const Comparison::Difference &first = *comparison.first;
    const auto hex = [](uint64_t value) { return hexNumber(static_cast<uint32_t>(value), 1); };
    const size_t front = content.front.size();
    const std::string byte = first.offset < front
                                 ? "byte " + hex(first.offset) + " of the header"
                                 : "byte " + hex(first.offset - front) + " of the file";
    if (!first.stored)
        return "the partition ends before " + byte + ", so that " +
               std::to_string(comparison.differing) + " bytes are missing or differ";
    std::string text = byte + ", at " + hex(first.place) + " in " + partition.device() + ", is " +
                       hexNumber(*first.stored, 2) + " instead of " + hexNumber(first.wanted, 2) +
                       ", and " + std::to_string(comparison.differing) + " of " +
                       std::to_string(content.size()) + " bytes differ";
    const std::string block = std::to_string(first.place / partition.blockSize());
    if (partition.isBad(first.place))
        text += "; block " + block + " is bad";
    else if (partition.isErased(first.place))
        text += "; block " + block + " reads as erased";
    return text;
}

} // namespace iodbg
