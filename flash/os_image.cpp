// The operating-system images: one NAND partition per bank, written and read by the system's MTD
// utilities, which know bad blocks.

#include "flash/os_image.h"

#include "flash/flash_lock.h"
#include "flash/partition.h"
#include "flash/shell_command.h"
#include "language/formats/os_image.h"
#include "support/file_size.h"
#include "support/kept_file.h"
#include "support/message.h"
#include "support/owned.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

using bsp::CallSite;
using bsp::ShellCommand;
using bsp::ShellWord;

namespace {

constexpr char kHeaderFile[] = "/tmp/bsp/osHeader.bin";

/** The size of an image file, if it is one that a bank can hold. */
int32_t readImageSize(const char *file, off_t *size, CallSite site = CallSite::here()) {
    off_t told = 0;
    if (!bsp::readFileSize(file, &told)) {
        bsp::report(site, "OS file state get failed\r\n");
        return BSP_E_SHORT_READ;
    }
    if (told > BSP_OS_IMAGE_MAX) {
        bsp::report(site, "OS file size %d > max %d\r\n", static_cast<int>(told), BSP_OS_IMAGE_MAX);
        return BSP_E_FAILED;
    }
    *size = told;
    return BSP_OK;
}

/** A file's descriptor as opening it answered, which is reported when it failed. */
int reportedOpen(int fd, const char *path, CallSite site = CallSite::here()) {
    if (fd < 0)
        bsp::report(site, "open %s fail.\r\n", path);
    return fd;
}

/** Runs a command of the image's way into flash. Its exit status is not taken apart. */
int32_t runReported(const ShellCommand &command, const char *work, const char *device,
                    CallSite site = CallSite::here()) {
    const int result = command.run();
    if (result == 0)
        return BSP_OK;
    bsp::report(site, "%s %s error, ret = %d\n", work, device, result);
    return BSP_E_FAILED;
}

int32_t removeHeaderFile() {
    return ShellCommand("rm -f %s", kHeaderFile).run();
}

} // namespace

int32_t bsp_os_image_write(const char *device, const char *file) {
    if (device == nullptr || file == nullptr)
        return BSP_E_NULL;
    off_t size = 0;
    if (const int32_t status = readImageSize(file, &size); status != BSP_OK)
        return status;

    const ShellWord partition(device);
    const ShellWord image(file);
    const ShellCommand erase("flash_erase -q %s 0 0", partition.text());
    const ShellCommand writeImage("nandwrite -q -p %s %s", partition.text(), image.text());
    const ShellCommand writeHeader("nandwrite -q -p -s %#x %s %s", formats::kOsHeaderPlace,
                                   partition.text(), kHeaderFile);
    // A name that is too long is refused while the old image is still there.
    if (!erase.fits() || !writeImage.fits() || !writeHeader.fits())
        return BSP_E_FAILED;

    const bsp::FlashLock lock;
    if (lock.hasFailed()) {
        bsp::report(CallSite::here(), "flash lock failed\r\n");
        return BSP_E_LOCK;
    }
    if (const int32_t status = runReported(erase, "erase", device); status != BSP_OK)
        return status;
    if (const int32_t status = runReported(writeImage, "write", device); status != BSP_OK)
        return status;
    if (const int32_t status = bsp_os_file_header_to_file(file, kHeaderFile); status != BSP_OK) {
        bsp::report(CallSite::here(), "get OS file header failed.\r\n");
        return status;
    }
    if (const int32_t status = runReported(writeHeader, "write", device); status != BSP_OK)
        return status;
    return removeHeaderFile();
}

int32_t bsp_os_file_header_to_file(const char *imageFile, const char *headerFile) {
    if (imageFile == nullptr || headerFile == nullptr)
        return BSP_E_NULL;
    off_t size = 0;
    if (const int32_t status = readImageSize(imageFile, &size); status != BSP_OK)
        return status;
    const bsp::PageBuffer header(static_cast<uint8_t *>(std::malloc(formats::kOsHeaderSize)));
    if (header == nullptr) {
        bsp::report(CallSite::here(), "malloc fail.\r\n");
        return BSP_E_NO_MEMORY;
    }
    const bsp::Descriptor image(reportedOpen(open(imageFile, O_RDONLY | O_CLOEXEC), imageFile));
    if (!image.isOpen())
        return BSP_E_OPEN;
    // An image without room for a header block has no such position.
    const auto start = static_cast<off_t>(formats::osHeaderStart(size));
    if (start < 0 || lseek(image.get(), start, SEEK_SET) != start)
        return BSP_E_WRITE;
    if (!bsp::readWhole(image.get(), header.get(), formats::kOsHeaderSize))
        return BSP_E_SHORT_READ;
    const bsp::Descriptor copy(reportedOpen(bsp::openKeptFile(headerFile), headerFile));
    if (!copy.isOpen())
        return BSP_E_OPEN;
    [[maybe_unused]] const ssize_t written =
        write(copy.get(), header.get(), formats::kOsHeaderSize);
    return BSP_OK;
}

int32_t bsp_os_header_file_to_buffer(const char *headerFile, uint8_t *buffer) {
    if (headerFile == nullptr || buffer == nullptr)
        return BSP_E_NULL;
    const bsp::Descriptor file(
        reportedOpen(open(headerFile, O_RDONLY | O_NOFOLLOW | O_CLOEXEC), headerFile));
    if (!file.isOpen())
        return BSP_E_OPEN;
    uint8_t header[formats::kOsHeaderSize];
    if (!bsp::readWhole(file.get(), header, sizeof(header)))
        return BSP_E_SHORT_READ;
    std::copy(std::begin(header), std::end(header), buffer);
    return BSP_OK;
}

int32_t bspOsImageInfoGet(uint8_t *header, int32_t bank) {
    if (header == nullptr)
        return BSP_E_NULL;
    const char *device = bsp::bankDevice(bank);
    int result = 0;
    {
        const bsp::FlashLock lock;
        if (lock.hasFailed()) {
            bsp::report(CallSite::here(), "flash lock failed\r\n");
            return BSP_E_LOCK;
        }
        result = ShellCommand("nanddump -q -s %#x -l %#x %s -f %s", formats::kOsHeaderPlace,
                              formats::kOsHeaderSize, device, kHeaderFile)
                     .run();
    }
    if (result != 0) {
        // The letter behind the line's end belongs to the message: log filters know it so.
        bsp::report(CallSite::here(), "dump %s error, ret = %d\nn", device, result);
        return BSP_E_FAILED;
    }
    if (const int32_t status = bsp_os_header_file_to_buffer(kHeaderFile, header);
        status != BSP_OK) {
        bsp::report(CallSite::here(), "get OS header file failed.\r\n");
        return status;
    }
    // The caller has the header by now, whatever becomes of the file.
    return removeHeaderFile();
}
