#include "virtual_board/board/flash_content.h"

#include "virtual_board/board/kernel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vb {

namespace {

constexpr uint32_t kChunk = 4096;
constexpr uint8_t kErasedByte = 0xFF;

void complement(uint8_t *data, uint32_t length) {
    for (uint32_t i = 0; i < length; ++i)
        data[i] = static_cast<uint8_t>(~data[i]);
}

bool writeAll(int fd, const uint8_t *data, uint32_t length, uint32_t offset) {
    return kernel::writeAt(fd, data, length, offset) == static_cast<ssize_t>(length);
}

const FlashContent &contentOf(const void *context) {
    return *static_cast<const FlashContent *>(context);
}

} // namespace

FlashFileName flashFileName(uint32_t index) {
    FlashFileName name;
    char *end = stpcpy(stpcpy(name.text, kFlashFolder), "/mtd");
    // Formatting text takes more of the stack than all the rest of a transfer.
    const uint32_t number = kFlashNumbers[index];
    if (number >= 10)
        *end++ = static_cast<char>('0' + number / 10);
    *end++ = static_cast<char>('0' + number % 10);
    *end = '\0';
    return name;
}

FlashContent::FlashContent(const BoardFolder &folder, uint32_t index)
    : fd_(folder.openOwnFile(flashFileName(index).text, O_RDWR)) {}

FlashContent::~FlashContent() {
    if (fd_ >= 0)
        kernel::close(fd_);
}

bool FlashContent::load(uint32_t offset, uint8_t *data, uint32_t length) const {
    if (isHole(offset, length)) {
        std::fill_n(data, length, kErasedByte);
        return true;
    }
    const ssize_t count = kernel::readAt(fd_, data, length, offset);
    complement(data, length);
    return count == static_cast<ssize_t>(length);
}

bool FlashContent::store(uint32_t offset, const uint8_t *data, uint32_t length) const {
    static uint8_t bytes[kChunk]; // one at a time works on a board, maybe on a small stack
    while (length > 0) {
        const uint32_t count = std::min(length, kChunk);
        std::copy(data, data + count, bytes);
        complement(bytes, count);
        if (!writeAll(fd_, bytes, count, offset))
            return false;
        data += count;
        offset += count;
        length -= count;
    }
    return true;
}

bool FlashContent::erase(uint32_t offset, uint32_t length) const {
    if (kernel::punchHole(fd_, offset, length))
        return true;
    // File systems without holes.
    static constexpr uint8_t kErasedChunk[kChunk] = {};
    while (length > 0) {
        const uint32_t count = std::min(length, kChunk);
        if (!writeAll(fd_, kErasedChunk, count, offset))
            return false;
        offset += count;
        length -= count;
    }
    return true;
}

uint32_t FlashContent::nextProgrammed(uint32_t offset, uint32_t size) const {
    const int64_t next = kernel::seek(fd_, offset, SEEK_DATA);
    if (next >= 0)
        return static_cast<uint32_t>(std::min<int64_t>(next, size));
    return errno == ENXIO ? size : offset;
}

/** Whether a part of the file, all of which is there, is erased. */
bool FlashContent::isHole(uint32_t offset, uint32_t length) const {
    const uint32_t end = offset + length;
    return nextProgrammed(offset, end) == end && kernel::seek(fd_, 0, SEEK_END) >= int64_t{end};
}

FlashCells FlashContent::cells() {
    return {this,
            [](void *context, uint32_t offset, uint8_t *data, uint32_t length) {
                return contentOf(context).load(offset, data, length);
            },
            [](void *context, uint32_t offset, const uint8_t *data, uint32_t length) {
                return contentOf(context).store(offset, data, length);
            },
            [](void *context, uint32_t offset, uint32_t length) {
                return contentOf(context).erase(offset, length);
            }};
}

} // namespace vb
