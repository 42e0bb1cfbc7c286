// ioctl on the driver's node, and the way of others to theirs.

#include "virtual_board/board/driver.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>

namespace {

vb::FileFound readFile(int fd, uint8_t *data, size_t size) {
    vb::FileFound found = {};
    ssize_t count = 0;
    while ((count = ::read(fd, data, size)) > 0) {
        found.crc = vb::crc32(data, static_cast<size_t>(count), found.crc);
        found.size += static_cast<uint32_t>(count);
    }
    return count == 0 ? found : vb::FileFound{errno, 0, 0};
}

/** The file that the module reads for a request. A path of the board's asks the board in turn. */
vb::FileFound fileFor(const BspIoctlRecord &record) {
    struct Memory {
        char name[vb::kMaxFileName];
        uint8_t data[4096];
    };
    static_assert(sizeof(Memory) <= vb::Scratch::kSize);
    vb::Scratch scratch;
    auto *memory = static_cast<Memory *>(scratch.take());
    const int error = memory != nullptr ? vb::copyFileName(record, memory->name) : ENOMEM;
    if (error != 0)
        return {error, 0, 0};
    const int fd = ::open(memory->name, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {errno, 0, 0};
    const vb::FileFound found = readFile(fd, memory->data, sizeof(memory->data));
    ::close(fd);
    return found;
}

int driverIoctl(unsigned long request, void *argument) {
    BspIoctlRecord record = {};
    if (!vb::copyFromUser(&record, argument, sizeof(record)))
        return vb::failWith(EFAULT);
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const auto code = static_cast<uint32_t>(request);
    const int savedErrno = errno;
    vb::FileFound file = {};
    if (vb::needsFile(code))
        file = fileFor(record); // before the lock
    int failure = ENODEV;       // the board is gone
    if (const vb::BoardLock lock(folder); lock.isHeld()) {
        vb::Board &board = *folder.board();
        failure = vb::serveRequest(board, vb::thisSender(board), code, record, file);
    }
    if (failure == 0 && !vb::copyToUser(argument, &record, sizeof(record)))
        failure = EFAULT;
    errno = failure != 0 ? failure : savedErrno;
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
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        if (found.node == vb::Node::Driver)                                                        \
            return driverIoctl(request, argument);                                                 \
        return found.node == vb::Node::Flash                                                       \
                   ? vb::partitionIoctl(fd, found.partition, request, argument)                    \
                   : VB_NEXT(symbol)(fd, request, argument);                                       \
    }

VB_SEAM_IOCTL(ioctl)
VB_SEAM_IOCTL(__ioctl_time64) // the name of ioctl on 32-bit systems with 64-bit time
