#pragma once
// Upgrade files of the boot loader.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace boot_loader_file {

using Bytes = std::vector<uint8_t>;

constexpr size_t kTrailer = 80;

inline void put(Bytes &bytes, size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

/** CRC-32 bit by bit, apart from the library's own. */
inline uint32_t crcOf(const Bytes &bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

/** Renews the checksum of a file's trailer. */
inline void seal(Bytes &file) {
    const auto trailer = file.end() - static_cast<ptrdiff_t>(kTrailer);
    Bytes summed(trailer, trailer + 12);
    summed.insert(summed.end(), trailer + 16, file.end());
    put(file, file.size() - kTrailer + 12, crcOf(summed));
}

/** The valid file of an image. */
inline Bytes of(const Bytes &image) {
    Bytes trailer(kTrailer, 0);
    put(trailer, 0, 0x424F4F54);
    put(trailer, 4, 0x11223344);
    put(trailer, 8, 80);
    put(trailer, 16, 0x55667788);
    put(trailer, 20, crcOf(image));
    std::memcpy(trailer.data() + 32, "ZENTRAV48_BOOT", 14);
    Bytes file = image;
    file.insert(file.end(), trailer.begin(), trailer.end());
    seal(file);
    return file;
}

} // namespace boot_loader_file
