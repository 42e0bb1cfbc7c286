#include "iodbg/boot_image.h"

#include "bsp.h"
#include "iodbg/failure.h"
#include "iodbg/host_file.h"
#include "support/byte_order.h"

#include <algorithm>
#include <string_view>

namespace iodbg {

namespace {

// The trailer's numbers are big-endian. The bytes between them mean nothing, but count for the CRC.
constexpr size_t kMagicAt = 0;
constexpr size_t kLengthAt = 8;
constexpr size_t kTrailerCrcAt = 12;
constexpr size_t kBehindTrailerCrc = 16;
constexpr size_t kDataCrcAt = 20;
constexpr size_t kNameAt = 32;
constexpr uint32_t kMagic = 0x424F4F54; // "BOOT"
constexpr std::string_view kBoardName = "ZENTRAV48_BOOT";

uint32_t crcOf(uint32_t start, ByteView bytes) {
    return bsp_crc32_cal(start, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

/** The CRC of all of the trailer but the field that holds it. */
uint32_t trailerCrc(ByteView trailer) {
    return crcOf(crcOf(0, trailer.first(kTrailerCrcAt)), trailer.subspan(kBehindTrailerCrc));
}

std::string wordText(uint32_t value) {
    return hexNumber(value, 8);
}

} // namespace

std::vector<BootField> bootFields(ByteView file) {
    const ByteView image = file.first(file.size() - kBootTrailerSize);
    const ByteView trailer = file.subspan(image.size());
    const auto field = [&](size_t offset) { return bsp::loadBe32(trailer.data() + offset); };
    return {{"magic", wordText(field(kMagicAt)), wordText(kMagic)},
            {"board name", fieldText(trailer.subspan(kNameAt)), std::string(kBoardName)},
            {"trailer length", std::to_string(field(kLengthAt)), std::to_string(kBootTrailerSize)},
            {"trailer CRC", wordText(field(kTrailerCrcAt)), wordText(trailerCrc(trailer))},
            {"image CRC", wordText(field(kDataCrcAt)), wordText(crcOf(0, image))}};
}

Bytes packBootFile(ByteView image) {
    Bytes file(image.begin(), image.end());
    file.resize(image.size() + kBootTrailerSize);
    uint8_t *trailer = file.data() + image.size();
    bsp::storeBe32(trailer + kMagicAt, kMagic);
    bsp::storeBe32(trailer + kLengthAt, kBootTrailerSize);
    bsp::storeBe32(trailer + kDataCrcAt, crcOf(0, image));
    std::copy(kBoardName.begin(), kBoardName.end(), trailer + kNameAt);
    bsp::storeBe32(trailer + kTrailerCrcAt, trailerCrc({trailer, kBootTrailerSize}));
    return file;
}

Bytes readBootFile(const std::string &path) {
    Bytes file = readHostFileOrInput(path, kLargestBootFile);
    if (file.size() <= kBootTrailerSize)
        throw Failure::usage("'" + inputName(path) + "' has " + std::to_string(file.size()) +
                             " bytes; a boot-loader upgrade file has 81 to 1048576; make one with "
                             "'iodbg image pack-boot'");
    return file;
}

} // namespace iodbg
