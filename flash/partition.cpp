#include "flash/partition.h"

#include <cstdio>
#include <unistd.h>

int bsp::openSynchronous(const char *path, int flags, mode_t mode) {
    const int fd = open(path, flags | O_SYNC | O_CLOEXEC, mode);
    if (fd < 0)
        std::printf("\nopen %s fail.\n", path);
    return fd;
}

void bsp::reportNoGeometry(const char *device, int fd, int32_t result) {
    std::printf("get %s(fd=%d) info error, ret = %d \n", device, fd, result);
}

bsp::PageBuffer bsp::allocatePage(uint32_t size) {
    PageBuffer page(static_cast<uint8_t *>(std::malloc(size)));
    if (page == nullptr)
        std::printf("malloc error ");
    return page;
}

bool bsp::seekTo(int fd, uint64_t offset) {
    const auto target = static_cast<off_t>(offset);
    return target >= 0 && lseek(fd, target, SEEK_SET) == target;
}

bool bsp::readWhole(int fd, void *bytes, uint32_t count) {
    return read(fd, bytes, count) == static_cast<ssize_t>(count);
}
