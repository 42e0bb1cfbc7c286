#include "iodbg/flash/boot_image.h"

#include "bsp.h"
#include "iodbg/core/excerpt.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "support/byte_order.h"

#include <cstddef>
#include <cstring>

namespace iodbg {

namespace {

uint32_t crcOf(uint32_t start, ByteView bytes) {
    return bsp_crc32_cal(start, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

/** The CRC of all of the trailer but the field that holds it. */
uint32_t trailerCrc(const BspBootTrailer &trailer) {
    constexpr size_t kCrcAt = offsetof(BspBootTrailer, trailerCrc);
    const ByteView bytes(reinterpret_cast<const uint8_t *>(&trailer), sizeof(trailer));
    return crcOf(crcOf(0, bytes.first(kCrcAt)), bytes.subspan(kCrcAt + sizeof(trailer.trailerCrc)));
}

std::string wordText(uint32_t value) {
    return hexNumber(value, 8);
}

} // namespace

std::vector<BootField> bootFields(ByteView file) {
    BspBootTrailer trailer;
    const ByteView image = file.first(file.size() - sizeof(trailer));
    std::memcpy(&trailer, file.data() + image.size(), sizeof(trailer));
    const ByteView name(reinterpret_cast<const uint8_t *>(trailer.boardName),
                        sizeof(trailer.boardName));
    return {
        {"magic", wordText(bsp::loadBe32(trailer.magic)), wordText(BSP_BOOT_MAGIC)},
        {"board name", excerpt(name), BSP_BOOT_BOARD_NAME},
        {"trailer length", std::to_string(bsp::loadBe32(trailer.length)),
         std::to_string(sizeof(trailer))},
        {"trailer CRC", wordText(bsp::loadBe32(trailer.trailerCrc)), wordText(trailerCrc(trailer))},
        {"image CRC", wordText(bsp::loadBe32(trailer.imageCrc)), wordText(crcOf(0, image))}};
}

Bytes packBootFile(ByteView image) {
    BspBootTrailer trailer{};
    bsp::storeBe32(trailer.magic, BSP_BOOT_MAGIC);
    bsp::storeBe32(trailer.length, sizeof(trailer));
    bsp::storeBe32(trailer.imageCrc, crcOf(0, image));
    std::memcpy(trailer.boardName, BSP_BOOT_BOARD_NAME, sizeof(BSP_BOOT_BOARD_NAME));
    bsp::storeBe32(trailer.trailerCrc, trailerCrc(trailer));

    Bytes file(image.begin(), image.end());
    const auto *bytes = reinterpret_cast<const uint8_t *>(&trailer);
    file.insert(file.end(), bytes, bytes + sizeof(trailer));
    return file;
}

Bytes readBootFile(const std::string &path) {
    Bytes file = readHostFileOrInput(path, BSP_BOOT_FILE_MAX);
    if (file.size() <= sizeof(BspBootTrailer))
        throw Failure::usage("'" + inputName(path) + "' has " + std::to_string(file.size()) +
                             " bytes; a boot-loader upgrade file has 81 to 1048576; make one with "
                             "'iodbg image pack-boot'");
    return file;
}

} // namespace iodbg
