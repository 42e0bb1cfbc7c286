// Reads, writes and seeks on the nodes of the flash partitions. A descriptor's position is that of
// its placeholder file, which copies and children share as they do on a device.

#include "virtual_board/os/mtd_request.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

VB_SEAM(off64_t, lseek64, int fd, off64_t offset, int whence) {
    const vb::NodeFound found = vb::nodeOf(fd);
    return found.node == vb::Node::Flash ? vb::seekPartition(fd, found.partition, offset, whence)
                                         : VB_NEXT(lseek64)(fd, offset, whence);
}

VB_SEAM(off_t, lseek, int fd, off_t offset, int whence) {
    const vb::NodeFound found = vb::nodeOf(fd);
    return found.node == vb::Node::Flash
               ? static_cast<off_t>(vb::seekPartition(fd, found.partition, offset, whence))
               : VB_NEXT(lseek)(fd, offset, whence);
}

namespace {

off64_t positionOf(int fd) {
    return VB_NEXT(lseek64)(fd, 0, SEEK_CUR);
}

using vb::failWith;

bool canRead(int fd) {
    return (fcntl(fd, F_GETFL) & O_ACCMODE) != O_WRONLY;
}

} // namespace

namespace vb {

void cutPower() {
    for (;;)
        kill(getpid(), SIGKILL);
}

off64_t seekPartition(int fd, uint32_t partition, off64_t offset, int whence) {
    const auto size =
        static_cast<off64_t>(attachedFolder()->board()->devices.flash[partition].geometry.size);
    const off64_t bases[] = {0, positionOf(fd), size};
    if (whence < SEEK_SET || whence > SEEK_END)
        return failWith(EINVAL);
    const off64_t base = bases[whence];
    if (offset < -base || offset > size - base)
        return failWith(EINVAL);
    return VB_NEXT(lseek64)(fd, base + offset, SEEK_SET);
}

ssize_t readPartitionAt(int fd, uint32_t partition, void *data, size_t length, off64_t offset) {
    pthread_testcancel(); // as in every transfer
    if (!canRead(fd))
        return failWith(EBADF);
    if (offset < 0)
        return failWith(EINVAL);
    const MtdAnswer answer = sendRequest(partition, [&](const MtdRequest &request) {
        return mtdRead(request, static_cast<uint64_t>(offset), static_cast<uint8_t *>(data),
                       length);
    });
    return resultOf(answer);
}

ssize_t writePartitionAt(int fd, uint32_t partition, const void *data, size_t length,
                         off64_t offset) {
    pthread_testcancel();
    if (!canWrite(fd))
        return failWith(EBADF);
    if (offset < 0)
        return failWith(EINVAL);
    const MtdAnswer answer = sendRequest(partition, [&](const MtdRequest &request) {
        return mtdWrite(request, static_cast<uint64_t>(offset), static_cast<const uint8_t *>(data),
                        length);
    });
    return resultOf(answer);
}

ssize_t readPartition(int fd, uint32_t partition, void *data, size_t length) {
    const off64_t offset = positionOf(fd);
    const ssize_t count = readPartitionAt(fd, partition, data, length, offset);
    if (count > 0)
        VB_NEXT(lseek64)(fd, offset + count, SEEK_SET);
    return count;
}

ssize_t writePartition(int fd, uint32_t partition, const void *data, size_t length) {
    const off64_t offset = positionOf(fd);
    const ssize_t count = writePartitionAt(fd, partition, data, length, offset);
    if (count > 0)
        VB_NEXT(lseek64)(fd, offset + count, SEEK_SET);
    return count;
}

} // namespace vb

// Transfers at a given position

#define VB_SEAM_PREAD(symbol, offsetType)                                                          \
    VB_SEAM(ssize_t, symbol, int fd, void *data, size_t length, offsetType offset) {               \
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        return found.node == vb::Node::Flash                                                       \
                   ? vb::readPartitionAt(fd, found.partition, data, length, offset)                \
               : found.node == vb::Node::Memory ? failWith(EPERM)                                  \
                                                : VB_NEXT(symbol)(fd, data, length, offset);       \
    }
VB_SEAM_PREAD(pread, off_t)
VB_SEAM_PREAD(pread64, off64_t)

#define VB_SEAM_PREAD_CHK(symbol, offsetType)                                                      \
    VB_SEAM(ssize_t, symbol, int fd, void *data, size_t length, offsetType offset, size_t size) {  \
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        return found.node == vb::Node::Flash && length <= size                                     \
                   ? vb::readPartitionAt(fd, found.partition, data, length, offset)                \
                   : VB_NEXT(symbol)(fd, data, length, offset, size);                              \
    }
VB_SEAM_PREAD_CHK(__pread_chk, off_t)
VB_SEAM_PREAD_CHK(__pread64_chk, off64_t)

#define VB_SEAM_PWRITE(symbol, offsetType)                                                         \
    VB_SEAM(ssize_t, symbol, int fd, const void *data, size_t length, offsetType offset) {         \
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        return found.node == vb::Node::Flash                                                       \
                   ? vb::writePartitionAt(fd, found.partition, data, length, offset)               \
               : found.node == vb::Node::Memory ? failWith(EPERM)                                  \
                                                : VB_NEXT(symbol)(fd, data, length, offset);       \
    }
VB_SEAM_PWRITE(pwrite, off_t)
VB_SEAM_PWRITE(pwrite64, off64_t)
