#pragma once
// The two requests to a flash partition's driver that this library needs.

#include <cstdint>
#include <mtd/mtd-abi.h>
#include <sys/ioctl.h>

namespace bsp {

using FlashGeometry = mtd_info_user;

/** Asks a partition for its sizes; negative when that failed. */
inline int queryGeometry(int fd, FlashGeometry &geometry) {
    return ioctl(fd, MEMGETINFO, &geometry);
}

/** Erases a range of whole erase blocks; negative when that failed. */
inline int eraseRange(int fd, uint32_t start, uint32_t length) {
    erase_info_user range = {start, length};
    return ioctl(fd, MEMERASE, &range);
}

} // namespace bsp
