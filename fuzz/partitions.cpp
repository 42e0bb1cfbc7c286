// Files in flash partitions of any geometry and content. On a chip that works, what was written is
// read again.

#include "bsp.h"
#include "fuzz/hostile_system.h"

namespace {

/** Sizes as chips have them. */
bsp::FlashGeometry usualGeometry(fuzz::Input &input) {
    bsp::FlashGeometry geometry = {};
    geometry.writesize = 1u << input.below(10);
    geometry.erasesize = geometry.writesize << input.below(4);
    geometry.size = geometry.erasesize * (1 + input.below(16));
    return geometry;
}

/** Reads what the length header says is stored, into a file that is thrown away. */
void readBack() {
    bsp_mtd_read_to_file(BSP_MTD_OS_BANK_0, "/tmp/copy", BSP_MTD_WITH_HEADER);
    bsp_mtd_read_to_file(BSP_MTD_OS_BANK_0, "/tmp/copy", BSP_MTD_WITHOUT_HEADER);
}

void writeAndCompare(hostile::System &system, int32_t header) {
    const hostile::Bytes before = *system.flash;
    const int32_t status = bsp_mtd_write_from_file("/tmp/image", BSP_MTD_OS_BANK_0, header);
    const size_t start = header != 0 ? BSP_MTD_HEADER_SIZE : 0;
    const hostile::Bytes &file = *system.file;
    if (file.size() > system.flash->size()) {
        fuzz::require(*system.flash == before, "a file that is too large changes the flash");
        return;
    }
    if (start + file.size() > system.flash->size())
        return; // the header takes the room of its end
    fuzz::require(status == BSP_OK &&
                      std::equal(file.begin(), file.end(),
                                 system.flash->begin() + static_cast<ptrdiff_t>(start)),
                  "the flash does not hold the file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    hostile::System system(input);
    const int32_t header = input.below(2) == 0 ? BSP_MTD_WITH_HEADER : BSP_MTD_WITHOUT_HEADER;
    if (input.below(2) == 0) { // a driver that says anything
        bsp_mtd_write_from_file("/tmp/image", BSP_MTD_OS_BANK_0, header);
        readBack();
        bsp_mtd_erase(BSP_MTD_OS_BANK_0);
        return 0;
    }
    system.canFail = false;
    system.geometry = usualGeometry(input);
    const size_t fileSize = input.quantity() % (system.geometry->size + 16);
    system.file = hostile::Bytes(fileSize);
    input.fill(system.file->data(), std::min<size_t>(fileSize, 64));
    system.flash = hostile::Bytes(system.geometry->size, 0xFF);
    input.fill(system.flash->data(), std::min<size_t>(system.flash->size(), 64));
    readBack();
    writeAndCompare(system, header);
    readBack();
    return 0;
}
