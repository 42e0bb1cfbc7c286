#include "virtual_board/os/descriptors.h"

#include "virtual_board/os/descriptor_link.h"
#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/next.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/socket.h>

namespace vb {

namespace {

struct KnownNode {
    kernel::Identity identity;
    NodeFound found;
};

KnownNode known[2 + kFlashPartitions]; // a board may go without a partition: its node is gone then
std::atomic<bool> canHaveFiles;

kernel::Identity identityAt(const HostPathBuffer &path) {
    return kernel::identityOf(AT_FDCWD, path.text);
}

/** What getdents64 stores. */
struct FolderEntry {
    uint64_t inode;
    int64_t next;
    uint16_t size;
    uint8_t type;
    char name[1];
};

bool isIn(const BoardFolder &folder, const char *link) {
    char path[kMaxFolderPath];
    const ssize_t length = kernel::readLink(AT_FDCWD, link, path, sizeof(path));
    const size_t root = std::strlen(folder.rootPath());
    return length >= static_cast<ssize_t>(root) && std::memcmp(path, folder.rootPath(), root) == 0;
}

bool isInherited(const BoardFolder &folder, const char *entries, long size) {
    for (long at = 0; at < size;) {
        FolderEntry entry;
        std::memcpy(&entry, entries + at, sizeof(entry));
        const char *name = entries + at + offsetof(FolderEntry, name);
        if (name[0] != '.' && isIn(folder, DescriptorLink(std::atoi(name)).text))
            return true;
        at += entry.size;
    }
    return false;
}

/** Whether the program that starts here has inherited a file of the board; or nobody can tell. */
bool hasInherited(const BoardFolder &folder) {
    if (isIn(folder, "/proc/self/cwd"))
        return true;
    const int table = kernel::open("/proc/self/fd", O_RDONLY | O_DIRECTORY);
    if (table < 0)
        return true;
    alignas(8) char entries[1024];
    bool isFound = false;
    long size = 0;
    while (!isFound && (size = kernel::call(SYS_getdents64, table, entries, sizeof(entries))) > 0)
        isFound = isInherited(folder, entries, size);
    kernel::close(table);
    return isFound || size < 0;
}

} // namespace

bool learnNodes(const BoardFolder &folder) {
    known[0] = {identityAt(folder.hostPath(kNodePath)), {Node::Driver, 0}};
    known[1] = {identityAt(folder.hostPath(kMemoryPath)), {Node::Memory, 0}};
    for (uint32_t index = 0; index < kFlashPartitions; ++index)
        known[2 + index] = {identityAt(folder.flashNode(index)), {Node::Flash, index}};
    if (hasInherited(folder))
        expectBoard();
    return known[0].identity.isKnown();
}

void forgetNodes() {
    std::memset(static_cast<void *>(known), 0, sizeof(known));
    canHaveFiles = false;
}

NodeFound nodeWith(const kernel::Identity &identity) {
    for (const KnownNode &node : known) {
        if (identity.isKnown() && node.identity == identity)
            return node.found;
    }
    return {};
}

NodeFound nodeOf(int fd) {
    if (!isBoardExpected())
        return {};
    const int savedErrno = errno;
    const NodeFound found = nodeWith(kernel::identityOf(fd));
    errno = savedErrno;
    return found;
}

void expectBoard() {
    canHaveFiles.store(true, std::memory_order_relaxed);
}

bool isBoardExpected() {
    return canHaveFiles.load(std::memory_order_relaxed);
}

} // namespace vb

// Descriptors that come from other processes. Whether one of them is a node's need not be known:
// from then on the kernel is asked.

namespace {

template <typename Result>
Result expectingBoard(Result result) {
    if (result >= 0)
        vb::expectBoard();
    return result;
}

} // namespace

#define VB_SEAM_RECVMSG(symbol)                                                                    \
    VB_SEAM(ssize_t, symbol, int socket, msghdr *message, int flags) {                             \
        if (!vb::awaitMessage(socket, flags))                                                      \
            return -1;                                                                             \
        const ssize_t count = VB_NEXT(symbol)(socket, message, flags);                             \
        return count >= 0 && message->msg_controllen > 0 ? expectingBoard(count) : count;          \
    }
VB_SEAM_RECVMSG(recvmsg)
VB_SEAM_RECVMSG(__recvmsg64)

#define VB_SEAM_RECVMMSG(symbol)                                                                   \
    VB_SEAM(int, symbol, int socket, void *messages, unsigned count, int flags, void *timeout) {   \
        return vb::awaitMessage(socket, flags)                                                     \
                   ? expectingBoard(VB_NEXT(symbol)(socket, messages, count, flags, timeout))      \
                   : -1;                                                                           \
    }
VB_SEAM_RECVMMSG(recvmmsg)
VB_SEAM_RECVMMSG(__recvmmsg64)

VB_SEAM(int, pidfd_getfd, int process, int fd, unsigned flags) {
    return expectingBoard(VB_NEXT(pidfd_getfd)(process, fd, flags));
}

VB_SEAM(int, open_by_handle_at, int mount, void *handle, int flags) {
    return expectingBoard(VB_NEXT(open_by_handle_at)(mount, handle, flags));
}
