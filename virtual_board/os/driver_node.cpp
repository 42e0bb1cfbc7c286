// ioctl on the driver's node, and the way of others to theirs.

#include "virtual_board/board/driver.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstdarg>

namespace {

int driverIoctl(unsigned long request, void *argument) {
    const vb::BoardFolder &folder = *vb::attachedFolder();
    if (argument == nullptr) {
        errno = EFAULT;
        return -1;
    }
    int failure = 0;
    {
        const vb::BoardLock lock(folder);
        vb::Board &board = *folder.board();
        failure = vb::serveRequest(board, vb::thisSender(board), static_cast<uint32_t>(request),
                                   *static_cast<BspIoctlRecord *>(argument));
    }
    if (failure != 0)
        errno = failure;
    return failure == 0 ? 0 : -1;
}

void *nextArgument(va_list arguments) {
    return va_arg(arguments, void *);
}

} // namespace

#define VB_SEAM_IOCTL(symbol)                                                                      \
    VB_SEAM(int, symbol, int fd, unsigned long request, ...) {                                     \
        va_list arguments;                                                                         \
        va_start(arguments, request);                                                              \
        void *argument = nextArgument(arguments);                                                  \
        va_end(arguments);                                                                         \
        if (vb::isDriverNode(fd))                                                                  \
            return driverIoctl(request, argument);                                                 \
        const uint32_t partition = vb::partitionOf(fd);                                            \
        return partition < vb::kFlashPartitions                                                    \
                   ? vb::partitionIoctl(fd, partition, request, argument)                          \
                   : VB_NEXT(symbol)(fd, request, argument);                                       \
    }

VB_SEAM_IOCTL(ioctl)
VB_SEAM_IOCTL(__ioctl_time64) // the name of ioctl on 32-bit systems with 64-bit time
