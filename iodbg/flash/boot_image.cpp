#include "iodbg/flash/boot_image.h"

#include "bsp.h"
#include "iodbg/core/excerpt.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "language/formats/boot_file.h"

namespace iodbg {

namespace {

uint32_t crcOf(ByteView bytes) {
    return formats::crc32(0, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

std::string wordText(uint32_t value) {
    return hexNumber(value, 8);
}

} // namespace

std::vector<BootField> bootFields(ByteView file) {
    const ByteView image = file.first(file.size() - formats::kBootTrailerSize);
    const ByteView bytes = file.subspan(image.size());
    const formats::BootTrailer trailer = formats::readBootTrailer(bytes.data());
    const ByteView name = bytes.subspan(formats::kBootNameAt, formats::kBootNameSize);
    return {{"magic", wordText(trailer.magic), wordText(formats::kBootMagic)},
            {"board name", excerpt(name), formats::kBootBoardName},
            {"trailer length", std::to_string(trailer.length),
             std::to_string(formats::kBootTrailerSize)},
            {"trailer CRC", wordText(trailer.trailerCrc),
             wordText(formats::computedTrailerCrc(bytes.data()))},
            {"image CRC", wordText(trailer.imageCrc), wordText(crcOf(image))}};
}

Bytes packBootFile(ByteView image) {
    Bytes file(image.begin(), image.end());
    file.resize(image.size() + formats::kBootTrailerSize);
    formats::writeBootTrailer(file.data() + image.size(), crcOf(image));
    return file;
}

Bytes readBootFile(const std::string &path, const std::string &name) {
    Bytes file = readHostFileOrInput(path, BSP_BOOT_FILE_MAX);
    if (file.size() <= formats::kBootTrailerSize)
        throw Failure::usage("'" + name + "' has " + std::to_string(file.size()) +
                             " bytes; a boot-loader upgrade file has 81 to 1048576; make one with "
                             "'iodbg image pack-boot'");
    return file;
}

} // namespace iodbg
