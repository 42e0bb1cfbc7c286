#pragma once
// The boot loader's upgrade file: the image, and behind it a trailer with the board's name and the
// checksums of both. Its numbers are big-endian; what is not interpreted counts for the checksum.

#include "language/formats/byte_order.h"
#include "language/formats/crc32.h"

#include <cstdint>
#include <cstring>

namespace formats {

constexpr uint32_t kBootTrailerSize = 80;
constexpr uint32_t kBootNameSize = 48;
constexpr uint32_t kBootMagic = 0x424F4F54; // "BOOT"
constexpr char kBootBoardName[] = "ZENTRAV48_BOOT";

// Where the trailer has its fields.
constexpr uint32_t kBootMagicAt = 0;
constexpr uint32_t kBootLengthAt = 8;
constexpr uint32_t kBootTrailerCrcAt = 12;
constexpr uint32_t kBootImageCrcAt = 20;
constexpr uint32_t kBootNameAt = 32;

struct BootTrailer {
    uint32_t magic;
    uint32_t length;     // of the trailer
    uint32_t trailerCrc; // of the trailer without this field
    uint32_t imageCrc;
    const char *boardName; // of kBootNameSize bytes, the last of which need not be a zero
};

inline BootTrailer readBootTrailer(const uint8_t *trailer) {
    return {loadBe32(trailer + kBootMagicAt), loadBe32(trailer + kBootLengthAt),
            loadBe32(trailer + kBootTrailerCrcAt), loadBe32(trailer + kBootImageCrcAt),
            reinterpret_cast<const char *>(trailer + kBootNameAt)};
}

/** Whether the trailer is that of a file for this family of boards. */
inline bool isForThisBoard(const BootTrailer &trailer) {
    return trailer.magic == kBootMagic &&
           std::strncmp(trailer.boardName, kBootBoardName, kBootNameSize) == 0;
}

/** The CRC of all of the trailer but the field that holds it. */
inline uint32_t computedTrailerCrc(const uint8_t *trailer) {
    constexpr uint32_t kBehindCrc = kBootTrailerCrcAt + sizeof(uint32_t);
    const uint32_t front = crc32(0, trailer, kBootTrailerCrcAt);
    return crc32(front, trailer + kBehindCrc, kBootTrailerSize - kBehindCrc);
}

/** Fills the trailer of an image. */
inline void writeBootTrailer(uint8_t *trailer, uint32_t imageCrc) {
    std::memset(trailer, 0, kBootTrailerSize);
    storeBe32(trailer + kBootMagicAt, kBootMagic);
    storeBe32(trailer + kBootLengthAt, kBootTrailerSize);
    storeBe32(trailer + kBootImageCrcAt, imageCrc);
    std::memcpy(trailer + kBootNameAt, kBootBoardName, sizeof(kBootBoardName));
    storeBe32(trailer + kBootTrailerCrcAt, computedTrailerCrc(trailer));
}

} // namespace formats
