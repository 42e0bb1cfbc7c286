// Files. The board's own files lie in its folder; everything else is where it always is.

#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/** What reads and writes of the board's /dev/mem answer: its memory can only be mapped. */
ssize_t refuseMemory() {
    errno = EPERM;
    return -1;
}

/** Opened as a stream, whose transfers within the C library no seam sees. */
constexpr int kStream = -1;

/** A rule that a use of a board's file trips; its id is 0 when there is none. */
vb::FaultRule fileFault(vb::FaultOp op, const char *boardPath) {
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const vb::BoardLock lock(folder);
    const vb::FaultSubject subject = {vb::FaultDevice::File, op, 0, 0, 0, 0, boardPath};
    const vb::FaultRule *rule = vb::faultFor(folder.board()->faults, subject);
    return rule != nullptr ? *rule : vb::FaultRule{};
}

/** Records the open of a board's file. Each request opens the driver's node: only failures count.
 */
void traceOpen(const char *boardPath, int error) {
    if (error == 0 && std::strcmp(boardPath, vb::kNodePath) == 0)
        return;
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const vb::BoardLock lock(folder);
    vb::Board &board = *folder.board();
    vb::TraceRecord &trace = vb::traceNext(board.trace, vb::TraceKind::Open, vb::thisSender(board));
    trace.error = error;
    std::strncpy(reinterpret_cast<char *>(trace.data), boardPath, sizeof(trace.data) - 1);
}

/** The flash partition whose node a board's path is; kFlashPartitions when it is none's. */
uint32_t partitionAt(const char *boardPath) {
    const vb::HostPathBuffer path = vb::attachedFolder()->hostPath(boardPath);
    for (uint32_t index = 0; index < vb::kFlashPartitions; ++index) {
        if (std::strcmp(vb::attachedFolder()->flashNode(index).text, path.text) == 0)
            return index;
    }
    return vb::kFlashPartitions;
}

/** The errno with which /dev/mem or a partition's node refuses to be opened; 0 when it does not. */
int nodeRefusal(const char *boardPath, int flags) {
    if (flags == kStream && std::strcmp(boardPath, vb::kMemoryPath) == 0)
        return ENOTSUP;
    const uint32_t partition = partitionAt(boardPath);
    if (partition == vb::kFlashPartitions)
        return 0;
    if (flags == kStream)
        return ENOTSUP;
    const vb::Flash &flash = vb::attachedFolder()->board()->devices.flash[partition];
    return flash.isWriteProtected != 0 && (flags & O_ACCMODE) != O_RDONLY ? EACCES : 0;
}

/**
 * Opens a path with one of the C library's ways of opening, which takes the path on the host.
 * failed is what that way answers when the open fails; flags are those of open, or kStream.
 */
template <typename Result, typename Open>
Result openPath(const char *path, int flags, Result failed, Open openOnHost) {
    const vb::HostPath target(path);
    if (!target.isOfBoard())
        return openOnHost(path);
    const vb::FaultRule fault = fileFault(vb::FaultOp::Open, target.onBoard());
    const bool isFaulty = fault.id != 0 && fault.effect == vb::FaultEffect::OpenFails;
    const int refusal = isFaulty ? fault.argument : nodeRefusal(target.onBoard(), flags);
    Result result = failed;
    if (refusal != 0)
        errno = refusal;
    else
        result = openOnHost(target.get());
    const int savedErrno = errno;
    traceOpen(target.onBoard(), result == failed ? savedErrno : 0);
    errno = savedErrno;
    return result;
}

/** The board's path of an open file, or null when the file is none of the board's. */
const char *boardPathOf(int fd, vb::HostPathBuffer &buffer) {
    char link[32];
    std::snprintf(link, sizeof(link), "/proc/self/fd/%d", fd);
    const ssize_t length = readlink(link, buffer.text, sizeof(buffer.text) - 1);
    if (length < 0)
        return nullptr;
    buffer.text[length] = '\0';
    const vb::HostPathBuffer root = vb::attachedFolder()->hostPath("");
    const size_t rootLength = std::strlen(root.text);
    return std::strncmp(buffer.text, root.text, rootLength) == 0 ? buffer.text + rootLength
                                                                 : nullptr;
}

/** The rule that a transfer on a descriptor trips; its id is 0 when there is none. */
vb::FaultRule transferFault(int fd, vb::FaultOp op) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr || folder->board()->faults.fileRules == 0)
        return {};
    const int savedErrno = errno;
    vb::HostPathBuffer buffer;
    const char *boardPath = boardPathOf(fd, buffer);
    const vb::FaultRule fault = boardPath != nullptr ? fileFault(op, boardPath) : vb::FaultRule{};
    errno = savedErrno;
    return fault;
}

size_t transferLength(const vb::FaultRule &fault, size_t length) {
    const bool isShort = fault.id != 0 && (fault.effect == vb::FaultEffect::Short ||
                                           fault.effect == vb::FaultEffect::PowerCut);
    return isShort ? std::min(length, static_cast<size_t>(fault.argument)) : length;
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

/** The mode behind the flags of an open that may create its file. */
mode_t modeArgument(int flags, va_list arguments) {
    constexpr int kTemporary = O_TMPFILE & ~O_DIRECTORY;
    return (flags & (O_CREAT | kTemporary)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// Opening

#define VB_SEAM_OPEN(symbol)                                                                       \
    VB_SEAM(int, symbol, const char *path, int flags, ...) {                                       \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return openPath(path, flags, -1,                                                           \
                        [=](const char *host) { return VB_NEXT(symbol)(host, flags, mode); });     \
    }
VB_SEAM_OPEN(open)
VB_SEAM_OPEN(open64)

#define VB_SEAM_OPENAT(symbol)                                                                     \
    VB_SEAM(int, symbol, int folder, const char *path, int flags, ...) {                           \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeArgument(flags, arguments);                                        \
        va_end(arguments);                                                                         \
        return openPath(path, flags, -1, [=](const char *host) {                                   \
            return VB_NEXT(symbol)(folder, host, flags, mode);                                     \
        });                                                                                        \
    }
VB_SEAM_OPENAT(openat)
VB_SEAM_OPENAT(openat64)

// What builds with source fortification call instead of the above.
#define VB_SEAM_OPEN_2(symbol)                                                                     \
    VB_SEAM(int, symbol, const char *path, int flags) {                                            \
        return openPath(path, flags, -1,                                                           \
                        [=](const char *host) { return VB_NEXT(symbol)(host, flags); });           \
    }
VB_SEAM_OPEN_2(__open_2)
VB_SEAM_OPEN_2(__open64_2)

#define VB_SEAM_OPENAT_2(symbol)                                                                   \
    VB_SEAM(int, symbol, int folder, const char *path, int flags) {                                \
        return openPath(path, flags, -1,                                                           \
                        [=](const char *host) { return VB_NEXT(symbol)(folder, host, flags); });   \
    }
VB_SEAM_OPENAT_2(__openat_2)
VB_SEAM_OPENAT_2(__openat64_2)

#define VB_SEAM_CREAT(symbol)                                                                      \
    VB_SEAM(int, symbol, const char *path, mode_t mode) {                                          \
        return openPath(path, O_WRONLY, -1,                                                        \
                        [=](const char *host) { return VB_NEXT(symbol)(host, mode); });            \
    }
VB_SEAM_CREAT(creat)
VB_SEAM_CREAT(creat64)

#define VB_SEAM_FOPEN(symbol)                                                                      \
    VB_SEAM(FILE *, symbol, const char *path, const char *mode) {                                  \
        return openPath(path, kStream, static_cast<FILE *>(nullptr),                               \
                        [=](const char *host) { return VB_NEXT(symbol)(host, mode); });            \
    }
VB_SEAM_FOPEN(fopen)
VB_SEAM_FOPEN(fopen64)

#define VB_SEAM_FREOPEN(symbol)                                                                    \
    VB_SEAM(FILE *, symbol, const char *path, const char *mode, FILE *file) {                      \
        return openPath(path, kStream, static_cast<FILE *>(nullptr),                               \
                        [=](const char *host) { return VB_NEXT(symbol)(host, mode, file); });      \
    }
VB_SEAM_FREOPEN(freopen)
VB_SEAM_FREOPEN(freopen64)

// Transfers

VB_SEAM(ssize_t, read, int fd, void *data, size_t length) {
    if (const uint32_t partition = vb::partitionOf(fd); partition < vb::kFlashPartitions)
        return vb::readPartition(fd, partition, data, length);
    if (vb::isMemoryNode(fd))
        return refuseMemory();
    const vb::FaultRule fault = transferFault(fd, vb::FaultOp::Read);
    const ssize_t count = VB_NEXT(read)(fd, data, transferLength(fault, length));
    corruptTransfer(fault, data, count);
    return count;
}

VB_SEAM(ssize_t, __read_chk, int fd, void *data, size_t length, size_t size) {
    const uint32_t partition = vb::partitionOf(fd);
    if (partition < vb::kFlashPartitions && length <= size)
        return vb::readPartition(fd, partition, data, length);
    if (vb::isMemoryNode(fd))
        return refuseMemory();
    const vb::FaultRule fault = transferFault(fd, vb::FaultOp::Read);
    const ssize_t count = VB_NEXT(__read_chk)(fd, data, transferLength(fault, length), size);
    corruptTransfer(fault, data, count);
    return count;
}

VB_SEAM(ssize_t, write, int fd, const void *data, size_t length) {
    if (const uint32_t partition = vb::partitionOf(fd); partition < vb::kFlashPartitions)
        return vb::writePartition(fd, partition, data, length);
    if (vb::isMemoryNode(fd))
        return refuseMemory();
    const vb::FaultRule fault = transferFault(fd, vb::FaultOp::Write);
    const ssize_t count = VB_NEXT(write)(fd, data, transferLength(fault, length));
    if (fault.id != 0 && fault.effect == vb::FaultEffect::PowerCut)
        cutPowerOfBoard();
    return count;
}

// Everything else that takes a path

#define VB_SEAM_PATH(symbol)                                                                       \
    VB_SEAM(int, symbol, const char *path) {                                                       \
        return VB_NEXT(symbol)(vb::HostPath(path).get());                                          \
    }
VB_SEAM_PATH(unlink)
VB_SEAM_PATH(rmdir)
VB_SEAM_PATH(remove)
VB_SEAM_PATH(chdir)

#define VB_SEAM_PATH_WITH(symbol, type)                                                            \
    VB_SEAM(int, symbol, const char *path, type argument) {                                        \
        return VB_NEXT(symbol)(vb::HostPath(path).get(), argument);                                \
    }
VB_SEAM_PATH_WITH(access, int)
VB_SEAM_PATH_WITH(euidaccess, int)
VB_SEAM_PATH_WITH(eaccess, int)
VB_SEAM_PATH_WITH(mkdir, mode_t)
VB_SEAM_PATH_WITH(chmod, mode_t)
VB_SEAM_PATH_WITH(truncate, off_t)
VB_SEAM_PATH_WITH(truncate64, off64_t)
VB_SEAM_PATH_WITH(stat, void *)
VB_SEAM_PATH_WITH(lstat, void *)
VB_SEAM_PATH_WITH(stat64, void *)
VB_SEAM_PATH_WITH(lstat64, void *)
VB_SEAM_PATH_WITH(__stat64_time64, void *)
VB_SEAM_PATH_WITH(__lstat64_time64, void *)

// What builds for C libraries before 2.33 call to examine files.
#define VB_SEAM_XSTAT(symbol)                                                                      \
    VB_SEAM(int, symbol, int version, const char *path, void *info) {                              \
        return VB_NEXT(symbol)(version, vb::HostPath(path).get(), info);                           \
    }
VB_SEAM_XSTAT(__xstat)
VB_SEAM_XSTAT(__lxstat)
VB_SEAM_XSTAT(__xstat64)
VB_SEAM_XSTAT(__lxstat64)

#define VB_SEAM_STATAT(symbol)                                                                     \
    VB_SEAM(int, symbol, int folder, const char *path, void *info, int flags) {                    \
        return VB_NEXT(symbol)(folder, vb::HostPath(path).get(), info, flags);                     \
    }
VB_SEAM_STATAT(fstatat)
VB_SEAM_STATAT(fstatat64)
VB_SEAM_STATAT(__fstatat64_time64)

VB_SEAM(int, statx, int folder, const char *path, int flags, unsigned mask, void *info) {
    return VB_NEXT(statx)(folder, vb::HostPath(path).get(), flags, mask, info);
}

VB_SEAM(int, faccessat, int folder, const char *path, int mode, int flags) {
    return VB_NEXT(faccessat)(folder, vb::HostPath(path).get(), mode, flags);
}

VB_SEAM(int, unlinkat, int folder, const char *path, int flags) {
    return VB_NEXT(unlinkat)(folder, vb::HostPath(path).get(), flags);
}

VB_SEAM(int, mkdirat, int folder, const char *path, mode_t mode) {
    return VB_NEXT(mkdirat)(folder, vb::HostPath(path).get(), mode);
}

VB_SEAM(int, rename, const char *from, const char *to) {
    return VB_NEXT(rename)(vb::HostPath(from).get(), vb::HostPath(to).get());
}

VB_SEAM(int, renameat, int fromFolder, const char *from, int toFolder, const char *to) {
    return VB_NEXT(renameat)(fromFolder, vb::HostPath(from).get(), toFolder,
                             vb::HostPath(to).get());
}

VB_SEAM(int, renameat2, int fromFolder, const char *from, int toFolder, const char *to,
        unsigned flags) {
    return VB_NEXT(renameat2)(fromFolder, vb::HostPath(from).get(), toFolder,
                              vb::HostPath(to).get(), flags);
}

VB_SEAM(DIR *, opendir, const char *path) {
    return VB_NEXT(opendir)(vb::HostPath(path).get());
}
