// Writing a file into a flash partition, page by page, around pages that cannot be written.

#include "bsp.h"
#include "flash/flash_lock.h"
#include "flash/partition.h"
#include "language/formats/length_header.h"
#include "support/file_size.h"
#include "support/message.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr useconds_t kBadPagePauseUs = 1000;

/** A file on its way into a partition. */
struct Transfer {
    int file;
    int device;
    uint8_t *page;
    uint32_t pageSize;
    uint64_t remaining;
    uint64_t readOffset = 0;
    uint64_t writeOffset = 0;
    ssize_t lastWrite = 0; // what the last page write answered
};

/** The bytes written first. Pages smaller than the length header, as NOR flash has, are joined. */
constexpr uint32_t headerPageSize(uint32_t pageSize) {
    if (pageSize >= formats::kLengthHeaderSize)
        return pageSize;
    return (formats::kLengthHeaderSize + pageSize - 1) / pageSize * pageSize;
}

/**
 * Erases the partition; behind a length header only as far as the file reaches and one block more.
 * A block that cannot be erased is left as it is. Drivers take writes into bad blocks all the same,
 * so that new data then mix with old: only reading back tells.
 */
void erase(int device, const bsp::FlashGeometry &geometry, uint64_t fileSize, bool hasHeader) {
    if (geometry.erasesize == 0)
        return; // nothing that could be erased, and no step to go by
    for (uint64_t offset = 0; offset < geometry.size; offset += geometry.erasesize) {
        const int result =
            bsp::eraseRange(device, static_cast<uint32_t>(offset), geometry.erasesize);
        if (hasHeader && result >= 0 && offset > fileSize)
            return;
    }
}

/** Writes the length header and the file's first bytes. The result of this write is not looked at:
 * a header that did not get into flash is noticed by whoever reads the partition.
 */
int32_t writeHeaderPage(Transfer &transfer) {
    const uint32_t size = headerPageSize(transfer.pageSize);
    const auto count = static_cast<uint32_t>(
        std::min<uint64_t>(transfer.remaining, size - formats::kLengthHeaderSize));
    std::memset(transfer.page, 0, size);
    formats::writeLengthHeader(transfer.page, static_cast<uint32_t>(transfer.remaining));
    if (!bsp::readWhole(transfer.file, transfer.page + formats::kLengthHeaderSize, count))
        return BSP_E_SHORT_READ;
    [[maybe_unused]] const ssize_t written = write(transfer.device, transfer.page, size);

    transfer.readOffset = count;
    transfer.writeOffset = size;
    transfer.remaining -= count;
    return BSP_OK;
}

/** Writes the next page; data that a page refuses stays to be written into the page behind it. */
int32_t writePage(Transfer &transfer) {
    const auto count =
        static_cast<uint32_t>(std::min<uint64_t>(transfer.remaining, transfer.pageSize));
    if (count < transfer.pageSize)
        std::memset(transfer.page, 0, transfer.pageSize);
    if (!bsp::seekTo(transfer.file, transfer.readOffset))
        return BSP_E_WRITE;
    if (!bsp::readWhole(transfer.file, transfer.page, count))
        return BSP_E_SHORT_READ;
    if (!bsp::seekTo(transfer.device, transfer.writeOffset))
        return BSP_E_WRITE;

    transfer.lastWrite = write(transfer.device, transfer.page, transfer.pageSize);
    transfer.writeOffset += transfer.pageSize;
    if (transfer.lastWrite != static_cast<ssize_t>(transfer.pageSize)) {
        usleep(kBadPagePauseUs);
        return BSP_OK;
    }
    transfer.readOffset += count;
    transfer.remaining -= count;
    return BSP_OK;
}

/** Fills an erased partition. */
int32_t writePages(Transfer &transfer, const char *device, uint64_t partitionSize, bool hasHeader) {
    const uint64_t fileSize = transfer.remaining;
    if (hasHeader)
        if (const int32_t status = writeHeaderPage(transfer); status != BSP_OK)
            return status;
    while (transfer.remaining != 0 && transfer.writeOffset < partitionSize)
        if (const int32_t status = writePage(transfer); status != BSP_OK)
            return status;
    if (transfer.remaining == 0)
        return BSP_OK;
    std::printf("write file to flash %s failed, filesize=%u, remaining=%u\r\n", device,
                static_cast<unsigned>(fileSize), static_cast<unsigned>(transfer.remaining));
    // The size of a page when the last one took its data: callers compare with 0.
    return static_cast<int32_t>(transfer.lastWrite);
}

/** The work under the lock. */
int32_t writeFile(const char *file, const char *device, uint64_t fileSize, bool hasHeader) {
    const bsp::Descriptor source(bsp::openSynchronous(file, O_RDONLY));
    if (!source.isOpen())
        return BSP_E_FAILED;
    const bsp::Descriptor target(bsp::openSynchronous(device, O_RDWR));
    if (!target.isOpen())
        return BSP_E_FAILED;

    bsp::FlashGeometry geometry = {};
    const int result = bsp::queryGeometry(target.get(), geometry);
    if (result < 0) {
        bsp::reportNoGeometry(device, target.get(), result);
        return result;
    }
    // A file that is too large and a lack of memory are answered with success, before anything is
    // erased. Callers rely on it: they go on with the old content and leave the message to the
    // console's reader.
    if (fileSize > geometry.size) {
        std::printf("Error, file size %d is big than mtd size %d. \n", static_cast<int>(fileSize),
                    static_cast<int>(geometry.size));
        return BSP_OK;
    }
    const uint32_t pageSize = bsp::pageSizeOf(geometry);
    const bsp::PageBuffer page = bsp::allocatePage(hasHeader ? headerPageSize(pageSize) : pageSize);
    if (page == nullptr)
        return BSP_OK;

    erase(target.get(), geometry, fileSize, hasHeader);
    Transfer transfer = {source.get(), target.get(), page.get(), pageSize, fileSize};
    return writePages(transfer, device, geometry.size, hasHeader);
}

} // namespace

int32_t bsp_mtd_write_from_file(const char *file, const char *device, int32_t hasHeader) {
    if (file == nullptr || device == nullptr)
        return BSP_E_NULL;
    bsp::FlashLock lock;
    if (lock.hasFailed()) {
        bsp::reportPlace(bsp::CallSite::here());
        return BSP_E_FAILED;
    }
    off_t size = 0;
    if (!bsp::readFileSize(file, &size)) {
        bsp::reportPlace(bsp::CallSite::here());
        // Released here, and once more in vain at the end. Kept: callers rely on the answer and on
        // what is printed as they are.
        lock.release();
        return BSP_E_FAILED;
    }
    return writeFile(file, device, static_cast<uint64_t>(size), hasHeader != 0);
}
