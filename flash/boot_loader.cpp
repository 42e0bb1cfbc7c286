// The boot loader's upgrade file: the image, and behind it a trailer with the board's name and the
// checksums of both. The messages call the trailer a header.

#include "flash/boot_loader.h"

#include "bsp.h"
#include "support/byte_order.h"
#include "support/owned.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr char kDevice[] = "/dev/mtd0";
constexpr uint32_t kLargestFile = 1048576;

// The trailer. Its fields are big-endian.
constexpr uint32_t kTrailerSize = 80;
constexpr uint32_t kMagicAt = 0;
constexpr uint32_t kLengthAt = 8;
constexpr uint32_t kTrailerCrcAt = 12;
constexpr uint32_t kBehindTrailerCrc = 16;
constexpr uint32_t kDataCrcAt = 20;
constexpr uint32_t kNameAt = 32;
constexpr uint32_t kMagic = 0x424F4F54; // "BOOT"
constexpr char kBoardName[] = "ZENTRAV48_BOOT";

using FileBuffer = std::unique_ptr<uint8_t, bsp::FreeMemory>;

bool isForThisBoard(const uint8_t *trailer) {
    const char *name = reinterpret_cast<const char *>(trailer + kNameAt);
    return bsp::loadBe32(trailer + kMagicAt) == kMagic &&
           std::strncmp(name, kBoardName, kTrailerSize - kNameAt) == 0;
}

/** The CRC of all of the trailer but the field that holds it. */
uint32_t trailerCrc(const uint8_t *trailer) {
    const uint32_t front = bsp_crc32_cal(0, trailer, kTrailerCrcAt);
    return bsp_crc32_cal(front, trailer + kBehindTrailerCrc, kTrailerSize - kBehindTrailerCrc);
}

int32_t refuse(const char *message) {
    std::printf("%s\n", message);
    return BSP_E_FAILED;
}

/** Reads an upgrade file whole; its size is stored. */
int32_t readFile(const char *path, FileBuffer &data, uint32_t *size) {
    struct stat info = {};
    if (stat(path, &info) != 0)
        return BSP_E_SHORT_READ;
    if (info.st_size > static_cast<off_t>(kLargestFile))
        return refuse("Bios file size error.\r");
    data.reset(static_cast<uint8_t *>(std::malloc(kLargestFile)));
    if (data == nullptr)
        return BSP_E_NO_MEMORY;
    const bsp::File file(std::fopen(path, "rb"));
    if (file == nullptr)
        return BSP_E_OPEN;
    *size = static_cast<uint32_t>(info.st_size);
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
    if (size < kTrailerSize)
        return refuse("Bios file header error(0).");
    const uint32_t dataSize = size - kTrailerSize;
    const uint8_t *trailer = data + dataSize;
    if (!isForThisBoard(trailer))
        return refuse("Bios file header error(0).");
    if (bsp::loadBe32(trailer + kLengthAt) != kTrailerSize)
        return refuse("Bios file header error(1).");
    if (bsp::loadBe32(trailer + kTrailerCrcAt) != trailerCrc(trailer))
        return refuse("Bios file header error(2).");
    if (bsp::loadBe32(trailer + kDataCrcAt) != bsp_crc32_cal(0, data, dataSize))
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
    if (const int32_t status = bsp_mtd_write_from_file(file, kDevice, 0); status != BSP_OK)
        std::printf("Update bios file error(%d), you'd better try again...\r\n", status);
    return BSP_OK;
}
