// Transfers of several buffers on the nodes and on sockets with time-outs, and those that need no
// buffer of the program's.

#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timers.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <sys/uio.h>

namespace {

/** The kernel looks at all buffers' places before it transfers the first. */
int vectorRefusal(const iovec *vector, int count) {
    if (count < 0 || count > IOV_MAX)
        return EINVAL;
    for (int i = 0; i < count; ++i) {
        iovec part;
        if (!vb::copyFromUser(&part, vector + i, sizeof(part)))
            return EFAULT;
        if (part.iov_len > SSIZE_MAX)
            return EINVAL;
    }
    return 0;
}

/** Transfers buffer by buffer, up to the first that is not transferred whole. */
template <typename Transfer>
ssize_t transferEach(const vb::NodeFound &found, const iovec *vector, int count,
                     Transfer transfer) {
    if (found.node == vb::Node::Memory)
        return vb::failWith(EPERM); // it can only be mapped
    if (const int refusal = vectorRefusal(vector, count); refusal != 0)
        return vb::failWith(refusal);
    ssize_t total = 0;
    for (int i = 0; i < count; ++i) {
        iovec part;
        if (!vb::copyFromUser(&part, vector + i, sizeof(part)))
            break;
        const ssize_t size = transfer(part, total);
        if (size < 0)
            return total > 0 ? total : -1;
        total += size;
        if (static_cast<size_t>(size) < part.iov_len)
            break;
    }
    return total;
}

bool isTransferred(const vb::NodeFound &found) {
    return found.node == vb::Node::Flash || found.node == vb::Node::Memory;
}

ssize_t readEach(int fd, const vb::NodeFound &found, const iovec *vector, int count) {
    return transferEach(found, vector, count, [&](const iovec &part, ssize_t) {
        return vb::readPartition(fd, found.partition, part.iov_base, part.iov_len);
    });
}

ssize_t writeEach(int fd, const vb::NodeFound &found, const iovec *vector, int count) {
    return transferEach(found, vector, count, [&](const iovec &part, ssize_t) {
        return vb::writePartition(fd, found.partition, part.iov_base, part.iov_len);
    });
}

ssize_t readEachAt(int fd, const vb::NodeFound &found, const iovec *vector, int count,
                   off64_t offset) {
    return transferEach(found, vector, count, [&](const iovec &part, ssize_t done) {
        return vb::readPartitionAt(fd, found.partition, part.iov_base, part.iov_len, offset + done);
    });
}

ssize_t writeEachAt(int fd, const vb::NodeFound &found, const iovec *vector, int count,
                    off64_t offset) {
    return transferEach(found, vector, count, [&](const iovec &part, ssize_t done) {
        return vb::writePartitionAt(fd, found.partition, part.iov_base, part.iov_len,
                                    offset + done);
    });
}

/** What has been read of a timer: how often it has gone off. */
ssize_t ofTimer(int fd, const iovec *vector, ssize_t size) {
    uint64_t expirations = 0;
    if (!vb::takeExpirations(fd, size, expirations))
        return size;
    const char *from = reinterpret_cast<const char *>(&expirations);
    for (auto left = static_cast<size_t>(size); left != 0; ++vector) {
        const size_t length = std::min(vector->iov_len, left);
        std::memcpy(vector->iov_base, from, length);
        from += length;
        left -= length;
    }
    return size;
}

/** As a read waits; what the kernel refuses does not. */
bool awaitRead(int fd, const iovec *vector, int count) {
    if (!vb::waitsByBoard() || vectorRefusal(vector, count) != 0)
        return true;
    size_t length = 0;
    for (int i = 0; i < count && length < sizeof(uint64_t); ++i)
        length += vector[i].iov_len;
    return vb::awaitRead(fd, length);
}

} // namespace

VB_SEAM(ssize_t, readv, int fd, const iovec *vector, int count) {
    const vb::NodeFound found = vb::nodeOf(fd);
    if (isTransferred(found))
        return readEach(fd, found, vector, count);
    return awaitRead(fd, vector, count) ? ofTimer(fd, vector, VB_NEXT(readv)(fd, vector, count))
                                        : -1;
}

VB_SEAM(ssize_t, writev, int fd, const iovec *vector, int count) {
    const vb::NodeFound found = vb::nodeOf(fd);
    if (isTransferred(found))
        return writeEach(fd, found, vector, count);
    return vb::awaitTransfer(fd, vb::Transfer::Out) ? VB_NEXT(writev)(fd, vector, count) : -1;
}

#define VB_SEAM_VECTOR_AT(symbol, transferAt, offsetType)                                          \
    VB_SEAM(ssize_t, symbol, int fd, const iovec *vector, int count, offsetType offset) {          \
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        return isTransferred(found) ? transferAt(fd, found, vector, count, offset)                 \
                                    : VB_NEXT(symbol)(fd, vector, count, offset);                  \
    }
VB_SEAM_VECTOR_AT(preadv, readEachAt, off_t)
VB_SEAM_VECTOR_AT(preadv64, readEachAt, off64_t)
VB_SEAM_VECTOR_AT(pwritev, writeEachAt, off_t)
VB_SEAM_VECTOR_AT(pwritev64, writeEachAt, off64_t)

// An offset of -1 is the descriptor's own position. Devices know none of the flags.
#define VB_SEAM_VECTOR_AT_2(symbol, transfer, transferAt, offsetType)                              \
    VB_SEAM(ssize_t, symbol, int fd, const iovec *vector, int count, offsetType offset,            \
            int flags) {                                                                           \
        const vb::NodeFound found = vb::nodeOf(fd);                                                \
        if (!isTransferred(found))                                                                 \
            return VB_NEXT(symbol)(fd, vector, count, offset, flags);                              \
        if (flags != 0)                                                                            \
            return vb::failWith(EOPNOTSUPP);                                                       \
        return offset == -1 ? transfer(fd, found, vector, count)                                   \
                            : transferAt(fd, found, vector, count, offset);                        \
    }
VB_SEAM_VECTOR_AT_2(preadv2, readEach, readEachAt, off_t)
VB_SEAM_VECTOR_AT_2(preadv64v2, readEach, readEachAt, off64_t)
VB_SEAM_VECTOR_AT_2(pwritev2, writeEach, writeEachAt, off_t)
VB_SEAM_VECTOR_AT_2(pwritev64v2, writeEach, writeEachAt, off64_t)

// Transfers from one descriptor to another, which devices like these do not take part in: programs
// copy with a buffer then.

namespace {

bool areNodes(int one, int other) {
    return vb::nodeOf(one).node != vb::Node::None || vb::nodeOf(other).node != vb::Node::None;
}

} // namespace

#define VB_SEAM_SENDFILE(symbol, OffsetPointer)                                                    \
    VB_SEAM(ssize_t, symbol, int to, int from, OffsetPointer offset, size_t length) {              \
        return areNodes(from, to) ? vb::failWith(EINVAL)                                           \
                                  : VB_NEXT(symbol)(to, from, offset, length);                     \
    }
VB_SEAM_SENDFILE(sendfile, off_t *)
VB_SEAM_SENDFILE(sendfile64, off64_t *)

#define VB_SEAM_COPY_DIRECTLY(symbol)                                                              \
    VB_SEAM(ssize_t, symbol, int from, off64_t *fromOffset, int to, off64_t *toOffset,             \
            size_t length, unsigned flags) {                                                       \
        return areNodes(from, to)                                                                  \
                   ? vb::failWith(EINVAL)                                                          \
                   : VB_NEXT(symbol)(from, fromOffset, to, toOffset, length, flags);               \
    }
VB_SEAM_COPY_DIRECTLY(splice)
VB_SEAM_COPY_DIRECTLY(copy_file_range)
