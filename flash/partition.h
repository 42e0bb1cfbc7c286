#pragma once
// What writing, reading and erasing a flash partition share.

#include "bsp.h"
#include "support/mtd.h"
#include "support/owned.h"

#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <sys/types.h>

namespace bsp {

using PageBuffer = std::unique_ptr<uint8_t, FreeMemory>;

/** Opens a partition, or the file beside it, with synchronous I/O; a failure is printed. */
int openSynchronous(const char *path, int flags, mode_t mode = 0);

/** "get /dev/mtd0(fd=3) info error, ret = -1" */
void reportNoGeometry(const char *device, int fd, int32_t result);

/** The unit in which a partition is written. */
constexpr uint32_t pageSizeOf(const FlashGeometry &geometry) {
    constexpr uint32_t kUsualPageSize = 2048;
    return geometry.writesize != 0 ? geometry.writesize : kUsualPageSize;
}

/** A buffer of the size, or none after a message when there is no memory. */
PageBuffer allocatePage(uint32_t size);

/** Moves a descriptor's position; whether it is there now. */
bool seekTo(int fd, uint64_t offset);

/** Reads so many bytes in one call; whether it gave them all. */
bool readWhole(int fd, void *bytes, uint32_t count);

} // namespace bsp
