// Files in flash partitions of any geometry and content. A chip that works holds what was written,
// and copies of it are what it holds.

#include "bsp.h"
#include "fuzz/hostile_system.h"
#include "language/formats/length_header.h"

namespace {

using fuzz::require;

constexpr size_t kFromInput = 64; // of a file or the flash

/** Sizes as chips have them. */
bsp::FlashGeometry usualGeometry(fuzz::Input &input) {
    bsp::FlashGeometry geometry = {};
    geometry.writesize = 1u << input.below(10);
    geometry.erasesize = geometry.writesize << input.below(4);
    geometry.size = geometry.erasesize * (1 + input.below(16));
    return geometry;
}

hostile::Bytes copied(hostile::System &system, int32_t header) {
    system.output = hostile::Bytes();
    require(bsp_mtd_read_to_file(BSP_MTD_OS_BANK_0, "/tmp/copy", header) == BSP_OK,
            "flash that works cannot be read");
    return *system.output;
}

/** The file that a partition's length header tells of. */
hostile::Bytes storedFile(const hostile::Bytes &flash) {
    if (flash.size() < BSP_MTD_HEADER_SIZE)
        return {};
    const uint32_t length = formats::storedFileLength(flash.data(), flash.size());
    const auto begin = flash.begin() + BSP_MTD_HEADER_SIZE;
    return {begin, begin + length};
}

void readAndCompare(hostile::System &system) {
    require(copied(system, BSP_MTD_WITHOUT_HEADER) == *system.flash, "a copy is not the partition");
    if (system.flash->size() >= BSP_MTD_HEADER_SIZE)
        require(copied(system, BSP_MTD_WITH_HEADER) == storedFile(*system.flash),
                "a copy is not the stored file");
}

void writeAndCompare(hostile::System &system, int32_t header) {
    const hostile::Bytes before = *system.flash;
    const int32_t status = bsp_mtd_write_from_file("/tmp/image", BSP_MTD_OS_BANK_0, header);
    const size_t start = header != 0 ? BSP_MTD_HEADER_SIZE : 0;
    const hostile::Bytes &file = *system.file;
    if (file.size() > system.flash->size()) {
        require(*system.flash == before, "a file that is too large changes the flash");
        return;
    }
    if (start + file.size() > system.flash->size())
        return; // the header takes the room of its end
    require(status == BSP_OK && std::equal(file.begin(), file.end(),
                                           system.flash->begin() + static_cast<ptrdiff_t>(start)),
            "the flash does not hold the file");
    require(header == 0 || storedFile(*system.flash) == file,
            "the length header does not tell of the file");
}

/** Bytes of the input, and behind them such as differ from place to place. */
hostile::Bytes content(fuzz::Input &input, size_t size) {
    hostile::Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
    input.fill(bytes.data(), std::min<size_t>(size, kFromInput));
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    hostile::System system(input);
    const int32_t header = input.below(2) == 0 ? BSP_MTD_WITH_HEADER : BSP_MTD_WITHOUT_HEADER;
    if (input.below(2) == 0) { // a driver that says anything
        bsp_mtd_write_from_file("/tmp/image", BSP_MTD_OS_BANK_0, header);
        bsp_mtd_read_to_file(BSP_MTD_OS_BANK_0, "/tmp/copy", BSP_MTD_WITH_HEADER);
        bsp_mtd_read_to_file(BSP_MTD_OS_BANK_0, "/tmp/copy", BSP_MTD_WITHOUT_HEADER);
        bsp_mtd_erase(BSP_MTD_OS_BANK_0);
        return 0;
    }
    system.canFail = false;
    system.geometry = usualGeometry(input);
    system.file = content(input, input.quantity() % (system.geometry->size + 16));
    system.flash = content(input, system.geometry->size);
    readAndCompare(system);
    writeAndCompare(system, header);
    readAndCompare(system);
    return 0;
}
