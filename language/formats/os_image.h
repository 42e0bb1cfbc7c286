#pragma once
// An operating-system image and its header block: the last bytes of the file. A bank has a copy of
// it behind the largest possible image, where it is found without knowing the image's length. What
// is in the block is the matter of the image's build.

#include <cstdint>

namespace formats {

constexpr uint32_t kOsHeaderSize = 512;
constexpr uint32_t kOsImageMax = 0x2700000;
constexpr uint32_t kOsHeaderPlace = kOsImageMax;
constexpr uint32_t kOsBankMin = kOsHeaderPlace + kOsHeaderSize;

/** Where an image file has its header block; below 0 for a file without room for one. */
constexpr int64_t osHeaderStart(int64_t fileSize) {
    return fileSize - kOsHeaderSize;
}

} // namespace formats
