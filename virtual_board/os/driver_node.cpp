// ioctl on the driver's node, and the way of others to theirs.

#include "virtual_board/board/driver.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>

namespace {

vb::FileFound readFile(int fd) {
    vb::FileFound found = {};
    uint8_t data[4096];
    ssize_t count = 0;
    while ((count = ::read(fd, data, sizeof(data))) > 0) {
        found.crc = vb::crc32(data, static_cast<size_t>(count), found.crc);
        found.size += static_cast<uint32_t>(count);
    }
    return count == 0 ? found : vb::FileFound{errno, 0, 0};
}

/** The file that the module reads for a request. A path of the board's asks the board in turn. */
vb::FileFound fileFor(uint32_t code, const BspIoctlRecord &record) {
    char name[vb::kMaxFileName];
    if (!vb::fileWanted(code, record, name))
        return {};
    const int fd = ::open(name, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {errno, 0, 0};
    const vb::FileFound found = readFile(fd);
    ::close(fd);
    return found;
}

int driverIoctl(unsigned long request, void *argument) {
    const vb::BoardFolder &folder = *vb::attachedFolder();
    if (argument == nullptr) {
        errno = EFAULT;
        return -1;
    }
    auto &record = *static_cast<BspIoctlRecord *>(argument);
    const auto code = static_cast<uint32_t>(request);
    const int savedErrno = errno;
    const vb::FileFound file = fileFor(code, record); // before the lock
    errno = savedErrno;
    int failure = 0;
    {
        const vb::BoardLock lock(folder);
        vb::Board &board = *folder.board();
        failure = vb::serveRequest(board, vb::thisSender(board), code, record, file);
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
