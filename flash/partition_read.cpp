// Copying a flash partition, or the file stored in it, into a file.

#include "bsp.h"
#include "flash/flash_lock.h"
#include "flash/partition.h"
#include "language/formats/length_header.h"
#include "support/message.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace {

/** Which bytes of a partition to copy. */
struct Extent {
    uint64_t offset = 0;
    uint64_t length = 0;
};

/** Where the stored file lies, told by the length header. Nothing of an empty or foreign partition.
 */
int32_t findStoredFile(int device, uint32_t partitionSize, Extent &extent) {
    uint8_t header[formats::kLengthHeaderSize] = {};
    if (!bsp::readWhole(device, header, sizeof(header)))
        return BSP_E_SHORT_READ;
    extent = {formats::kLengthHeaderSize, formats::storedFileLength(header, partitionSize)};
    return BSP_OK;
}

/** Appends an extent of the device to the output file. What the file does not take is not noticed.
 */
int32_t copyPages(int device, int output, uint8_t *page, const bsp::FlashGeometry &geometry,
                  Extent extent) {
    const uint32_t pageSize = bsp::pageSizeOf(geometry);
    while (extent.length != 0 && extent.offset < geometry.size) {
        const auto count = static_cast<uint32_t>(std::min<uint64_t>(extent.length, pageSize));
        if (count < pageSize)
            std::memset(page, 0, pageSize);
        if (!bsp::seekTo(device, extent.offset))
            return BSP_E_WRITE;
        if (!bsp::readWhole(device, page, count))
            return BSP_E_SHORT_READ;
        lseek(output, 0, SEEK_END);
        [[maybe_unused]] const ssize_t written = write(output, page, count);
        extent.offset += count;
        extent.length -= count;
    }
    return BSP_OK;
}

/** The work under the lock. */
int32_t readPartition(const char *device, const char *file, bool hasHeader) {
    const bsp::Descriptor source(bsp::openSynchronous(device, O_RDONLY));
    if (!source.isOpen())
        return BSP_E_OPEN;
    bsp::FlashGeometry geometry = {};
    if (bsp::queryGeometry(source.get(), geometry) < 0) {
        bsp::reportNoGeometry(device, source.get(), BSP_E_ERASE);
        return BSP_E_ERASE;
    }
    Extent extent = {0, geometry.size};
    if (hasHeader) {
        extent = {};
        if (const int32_t status = findStoredFile(source.get(), geometry.size, extent);
            status != BSP_OK)
            return status;
        if (extent.length == 0)
            return BSP_OK; // nothing is stored here, and no file is made of it
    }
    const bsp::Descriptor output(bsp::openSynchronous(file, O_RDWR | O_CREAT, 0644));
    if (!output.isOpen())
        return BSP_E_OPEN;
    const bsp::PageBuffer page = bsp::allocatePage(bsp::pageSizeOf(geometry));
    if (page == nullptr)
        return BSP_E_NO_MEMORY;
    return copyPages(source.get(), output.get(), page.get(), geometry, extent);
}

} // namespace

int32_t bsp_mtd_read_to_file(const char *device, const char *file, int32_t hasHeader) {
    if (device == nullptr || file == nullptr)
        return BSP_E_NULL;
    const bsp::FlashLock lock;
    if (lock.hasFailed()) {
        bsp::reportPlace(bsp::CallSite::here());
        return BSP_E_LOCK;
    }
    return readPartition(device, file, hasHeader != 0);
}
