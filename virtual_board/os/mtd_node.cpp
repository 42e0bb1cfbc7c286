// Reads, writes, seeks and ioctls on the nodes of the flash partitions. A descriptor's position is
// that of its placeholder file, which copies and children share as they do on a device.

#include "virtual_board/board/mtd.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <mtd/mtd-abi.h>
#include <pthread.h>
#include <sys/ioctl.h>
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

bool canWrite(int fd) {
    return (fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY;
}

/** Sends a request under the board's lock; errno is untouched unless the request fails. */
template <typename Send>
vb::MtdAnswer sendRequest(uint32_t partition, Send send) {
    const int savedErrno = errno;
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const vb::BoardLock lock(folder);
    if (!lock.isHeld()) {
        errno = ENODEV; // the board is gone
        return {ENODEV, 0, false};
    }
    const uint64_t now = vb::clockNow(folder.board()->clock, vb::hostNow());
    const vb::MtdAnswer answer = send(vb::MtdRequest{folder, {getpid(), now}, partition});
    if (answer.isPowerCut)
        vb::cutPower();
    errno = answer.error != 0 ? answer.error : savedErrno;
    return answer;
}

int resultOf(const vb::MtdAnswer &answer) {
    return answer.error != 0 ? -1 : static_cast<int>(answer.value);
}

void describe(const vb::Flash &flash, mtd_info_user &info) {
    const bool isNor = flash.geometry.type == vb::FlashType::Nor;
    const uint32_t flags = isNor ? MTD_CAP_NORFLASH : MTD_CAP_NANDFLASH;
    info = {};
    info.type = isNor ? MTD_NORFLASH : MTD_NANDFLASH;
    info.flags = flash.isWriteProtected != 0 ? flags & ~uint32_t{MTD_WRITEABLE} : flags;
    info.size = flash.geometry.size;
    info.erasesize = flash.geometry.eraseSize;
    info.writesize = flash.geometry.pageSize;
    info.oobsize = flash.geometry.spareSize;
}

vb::MtdAnswer badAddress() {
    return {EFAULT, 0, false};
}

template <typename Value>
vb::MtdAnswer store(const vb::MtdAnswer &answer, const Value &value, void *argument) {
    return vb::copyToUser(argument, &value, sizeof(value)) ? answer : badAddress();
}

vb::MtdAnswer serveInfo(const vb::MtdRequest &request, void *argument) {
    const vb::MtdAnswer answer = vb::mtdInfo(request);
    if (answer.error != 0)
        return answer;
    mtd_info_user info;
    describe(request.folder.board()->devices.flash[request.index], info);
    return store(answer, info, argument);
}

vb::MtdAnswer serveStatistics(const vb::MtdRequest &request, uint32_t code, void *argument) {
    const vb::MtdAnswer answer = vb::mtdStatistics(request, code);
    if (answer.error != 0)
        return answer;
    mtd_ecc_stats stats = {}; // no page has a code that could have found errors
    stats.badblocks = answer.value;
    return store(answer, stats, argument);
}

template <typename Blocks>
vb::MtdAnswer serveErase(const vb::MtdRequest &request, int fd, const void *argument) {
    Blocks blocks;
    return vb::copyFromUser(&blocks, argument, sizeof(blocks))
               ? vb::mtdErase(request, canWrite(fd), blocks.start, blocks.length)
               : badAddress();
}

/** A question about a block, or its marking, by its offset. */
template <typename Serve>
vb::MtdAnswer serveBlock(const void *argument, Serve serve) {
    int64_t offset = 0;
    return vb::copyFromUser(&offset, argument, sizeof(offset)) ? serve(offset) : badAddress();
}

vb::MtdAnswer serve(const vb::MtdRequest &request, int fd, uint32_t code, void *argument) {
    switch (code) {
    case MEMGETINFO:
        return serveInfo(request, argument);
    case MEMERASE:
        return serveErase<erase_info_user>(request, fd, argument);
    case MEMERASE64:
        return serveErase<erase_info_user64>(request, fd, argument);
    case MEMGETBADBLOCK:
        return serveBlock(argument, [&](int64_t offset) { return vb::mtdIsBad(request, offset); });
    case MEMSETBADBLOCK:
        return serveBlock(argument, [&](int64_t offset) {
            return vb::mtdMarkBad(request, canWrite(fd), offset);
        });
    case ECCGETSTATS:
        return serveStatistics(request, code, argument);
    default:
        return vb::mtdOther(request, code);
    }
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

int partitionIoctl(int fd, uint32_t partition, unsigned long code, void *argument) {
    const MtdAnswer answer = sendRequest(partition, [&](const MtdRequest &request) {
        return serve(request, fd, static_cast<uint32_t>(code), argument);
    });
    return answer.error == 0 && code != MEMGETBADBLOCK ? 0 : resultOf(answer);
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
