// The boot loader's upgrade. The messages call the trailer of its file a header.

#include "flash/boot_loader.h"

#include "bsp.h"
#include "language/formats/boot_file.h"
#include "support/board_map.h"
#include "support/file_size.h"
#include "support/owned.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace {

using FileBuffer = std::unique_ptr<uint8_t, bsp::FreeMemory>;

int32_t refuse(const char *message) {
    std::printf("%s\n", message);
    return BSP_E_FAILED;
}

/** Reads an upgrade file whole; its size is stored. */
int32_t readFile(const char *path, FileBuffer &data, uint32_t *size) {
    off_t told = 0;
    if (!bsp::readFileSize(path, &told))
        return BSP_E_SHORT_READ;
    // A size below 0 would be read as a huge count, far beyond the buffer: it is refused as such.
    if (static_cast<std::make_unsigned_t<off_t>>(told) > BSP_BOOT_FILE_MAX)
        return refuse("Bios file size error.\r");
    data.reset(static_cast<uint8_t *>(std::malloc(BSP_BOOT_FILE_MAX)));
    if (data == nullptr)
        return BSP_E_NO_MEMORY;
    const bsp::File file(std::fopen(path, "rb"));
    if (file == nullptr)
        return BSP_E_OPEN;
    *size = static_cast<uint32_t>(told);
    if (const size_t count = std::fread(data.get(), 1, *size, file.get()); count != *size) {
        std::printf("Reading Bios filesize %d failed.\r\n", static_cast<int>(count));
        return BSP_E_SHORT_READ;
    }
    return BSP_OK;
}

} // namespace

int32_t bsp_bios_file_check(const uint8_t *data, uint32_t size) {
    if (data == nullptr)
        return BSP_E_NULL;
    if (size < formats::kBootTrailerSize)
        return refuse("Bios file header error(0).");
    const uint32_t imageSize = size - formats::kBootTrailerSize;
    const uint8_t *bytes = data + imageSize;
    const formats::BootTrailer trailer = formats::readBootTrailer(bytes);
    if (!formats::isForThisBoard(trailer))
        return refuse("Bios file header error(0).");
    if (trailer.length != formats::kBootTrailerSize)
        return refuse("Bios file header error(1).");
    if (trailer.trailerCrc != formats::computedTrailerCrc(bytes))
        return refuse("Bios file header error(2).");
    if (trailer.imageCrc != formats::crc32(0, data, imageSize))
        return refuse("Bios file data error.");
    return BSP_OK;
}

int32_t bsp::upgradeBootLoader(const char *file) {
    if (file == nullptr)
        return BSP_E_NULL;
    FileBuffer data;
    uint32_t size = 0;
    if (const int32_t status = readFile(file, data, &size); status != BSP_OK)
        return status;
    if (const int32_t status = bsp_bios_file_check(data.get(), size); status != BSP_OK) {
        std::printf("Bios file is invalid. \r\n");
        return status;
    }
    // The file is read again by its name. A failed write is told on the console alone; callers rely
    // on the answer 0 and look at the message.
    if (const int32_t status =
            bsp_mtd_write_from_file(file, bsp::kBootLoaderPartition, BSP_MTD_WITHOUT_HEADER);
        status != BSP_OK)
        std::printf("Update bios file error(%d), you'd better try again...\r\n", status);
    return BSP_OK;
}
