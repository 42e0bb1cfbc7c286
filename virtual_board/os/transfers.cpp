// Reads and writes: of nodes they are requests, of other files of the board what fault rules leave
// of them.

#include "virtual_board/os/board_files.h"
#include "virtual_board/os/descriptor_link.h"
#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/timers.h"

namespace {

/** The rule that a transfer on a descriptor trips; its id is 0 when there is none. */
vb::FaultRule transferFault(int fd, vb::FaultOp op) {
    const int savedErrno = errno;
    vb::FaultRule fault = {};
    // The link of a descriptor leads to the file's path on the board, if it has one.
    const vb::HostPath target(vb::DescriptorLink(fd).text);
    if (target.isOfBoard())
        fault = vb::fileFault(op, target.onBoard());
    errno = savedErrno;
    return fault;
}

bool hasFileRules() {
    const vb::BoardFolder *folder = vb::attachedFolder();
    return folder != nullptr && folder->board()->faults.fileRules != 0;
}

size_t transferLength(const vb::FaultRule &fault, size_t length) {
    const bool isShort =
        fault.effect == vb::FaultEffect::Short || fault.effect == vb::FaultEffect::PowerCut;
    return fault.id != 0 && isShort ? std::min(length, static_cast<size_t>(fault.argument))
                                    : length;
}

[[noreturn]] void cutPowerOfBoard() {
    {
        const vb::BoardLock lock(*vb::attachedFolder());
        ++vb::attachedFolder()->board()->devices.powerCuts;
    }
    vb::cutPower();
}

void corruptTransfer(const vb::FaultRule &fault, void *data, ssize_t length) {
    if (fault.id != 0 && fault.effect == vb::FaultEffect::Corrupt && fault.argument < length) {
        auto &byte = static_cast<uint8_t *>(data)[fault.argument];
        byte = static_cast<uint8_t>(byte ^ fault.mask);
    }
}

/** Reads from a file that is no flash; readFile takes the length and goes on to the C library. */
template <typename Read>
ssize_t readPlainly(const vb::NodeFound &found, int fd, void *data, size_t length, Read readFile) {
    if (found.node == vb::Node::Memory)
        return vb::failWith(EPERM); // it can only be mapped
    if (!vb::awaitRead(fd, length))
        return -1;
    if (!hasFileRules())
        return readFile(length);
    const vb::FaultRule fault = transferFault(fd, vb::FaultOp::Read);
    const ssize_t count = readFile(transferLength(fault, length));
    corruptTransfer(fault, data, count);
    return count;
}

/** What has been read of a timer: how often it has gone off. */
ssize_t ofTimer(int fd, void *data, ssize_t count) {
    uint64_t expirations = 0;
    if (vb::takeExpirations(fd, count, expirations))
        std::memcpy(data, &expirations, sizeof(expirations));
    return count;
}

} // namespace

VB_SEAM(ssize_t, read, int fd, void *data, size_t length) {
    const vb::NodeFound found = vb::nodeOf(fd);
    if (found.node == vb::Node::Flash)
        return vb::readPartition(fd, found.partition, data, length);
    return readPlainly(found, fd, data, length, [=](size_t part) {
        return ofTimer(fd, data, VB_NEXT(read)(fd, data, part));
    });
}

VB_SEAM(ssize_t, __read_chk, int fd, void *data, size_t length, size_t size) {
    const vb::NodeFound found = vb::nodeOf(fd);
    if (found.node == vb::Node::Flash && length <= size)
        return vb::readPartition(fd, found.partition, data, length);
    return readPlainly(found, fd, data, length, [=](size_t part) {
        return ofTimer(fd, data, VB_NEXT(__read_chk)(fd, data, part, size));
    });
}

VB_SEAM(ssize_t, write, int fd, const void *data, size_t length) {
    const vb::NodeFound found = vb::nodeOf(fd);
    if (found.node == vb::Node::Flash)
        return vb::writePartition(fd, found.partition, data, length);
    if (found.node == vb::Node::Memory)
        return vb::failWith(EPERM);
    if (!vb::awaitTransfer(fd, vb::Transfer::Out))
        return -1;
    if (!hasFileRules())
        return VB_NEXT(write)(fd, data, length);
    const vb::FaultRule fault = transferFault(fd, vb::FaultOp::Write);
    const ssize_t count = VB_NEXT(write)(fd, data, transferLength(fault, length));
    if (fault.id != 0 && fault.effect == vb::FaultEffect::PowerCut)
        cutPowerOfBoard();
    return count;
}
