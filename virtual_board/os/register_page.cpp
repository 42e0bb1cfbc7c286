// The page of physical memory with the MDIO command register: a file of the board that programs
// map. Nothing else of /dev/mem is within a board's reach.

#include "virtual_board/board/kernel.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

namespace vb {

namespace {

constexpr uint32_t kMostMappings = 16;
/** Where this process has mapped the page; changed under the board's lock. */
void *mappings[kMostMappings];

bool remember(void *from, void *to) {
    void **place = std::find(std::begin(mappings), std::end(mappings), from);
    if (place == std::end(mappings))
        return false;
    *place = to;
    return true;
}

bool rememberNew(const BoardFolder &folder, void *address) {
    const BoardLock lock(folder);
    return lock.isHeld() && remember(nullptr, address);
}

bool isMapped() {
    return std::any_of(std::begin(mappings), std::end(mappings),
                       [](const void *address) { return address != nullptr; });
}

void traceDone(Board &board, const MdioDone &done) {
    const TraceKind kind = done.isWrite ? TraceKind::MdioWrite : TraceKind::MdioRead;
    TraceRecord &trace = traceNext(board.trace, kind, thisSender(board));
    trace.devAddr = done.first;
    trace.offset = done.second;
    trace.value = done.value;
    trace.error = done.hasFailed ? EIO : 0;
}

/** Lets the controller look at the command register. */
void lookAtPage(const BoardFolder &folder, MdioDone (*look)(Mdio &, uint32_t &)) {
    const int fd = folder.openOwnFile(kRegisterPageFile, O_RDWR);
    uint32_t content = 0;
    if (fd >= 0 && kernel::readAt(fd, &content, sizeof(content), kMdioCommand) == sizeof(content)) {
        const uint32_t before = content;
        const MdioDone done = look(folder.board()->devices.mdio, content);
        if (done.isDone)
            traceDone(*folder.board(), done);
        // The file and its mappings are the same memory.
        if (content != before && kernel::writeAt(fd, &content, sizeof(content), kMdioCommand) < 0)
            errno = EIO; // the command stays busy, which programs can tell
    }
    if (fd >= 0)
        kernel::close(fd);
}

/** The errno with which a mapping is refused; 0 when it is not. */
int mappingRefusal(const BoardFolder &folder, size_t length, int flags, off64_t offset) {
    const BoardLock lock(folder);
    const FaultSubject subject = {FaultDevice::File, FaultOp::Map, 0, 0, 0, 0, kMemoryPath};
    const FaultRule *rule = faultFor(folder.board()->faults, subject);
    if (rule != nullptr && rule->effect == FaultEffect::Fails)
        return rule->argument;
    if (offset != off64_t{kMdioPageAddress} || length > kMdioPageSize)
        return EPERM;
    return (flags & MAP_SHARED) == 0 ? EINVAL : 0;
}

template <typename Map>
void *mapPage(int fd, size_t length, int flags, off64_t offset, Map map) {
    const BoardFolder &folder = *attachedFolder();
    const int savedErrno = errno;
    int failure = mappingRefusal(folder, length, flags, offset);
    void *address = MAP_FAILED;
    if (failure == 0) {
        const int access = fcntl(fd, F_GETFL) & O_ACCMODE;
        const int page = folder.openOwnFile(kRegisterPageFile, access);
        address = map(page);
        failure = errno;
        kernel::close(page);
    }
    if (address != MAP_FAILED && !rememberNew(folder, address)) {
        munmap(address, length); // which takes the lock itself
        address = MAP_FAILED;
        failure = ENOMEM;
    }
    errno = address == MAP_FAILED ? failure : savedErrno;
    return address;
}

/** A command that nobody waits for any more ends by itself. */
void forgetMapping(void *address) {
    const BoardFolder *folder = attachedFolder();
    if (folder == nullptr || address == nullptr || !isMapped())
        return;
    const int savedErrno = errno;
    const BoardLock lock(*folder);
    if (remember(address, nullptr) && lock.isHeld())
        lookAtPage(*folder, mdioFinish);
    errno = savedErrno;
}

} // namespace

void pollRegisterPage(const BoardFolder &folder) {
    if (isMapped())
        lookAtPage(folder, mdioPoll);
}

} // namespace vb

#define VB_SEAM_MMAP(symbol, offsetType)                                                           \
    VB_SEAM(void *, symbol, void *address, size_t length, int protection, int flags, int fd,       \
            offsetType offset) {                                                                   \
        const vb::Node node = fd < 0 ? vb::Node::None : vb::nodeOf(fd).node;                       \
        if (node == vb::Node::None)                                                                \
            return VB_NEXT(symbol)(address, length, protection, flags, fd, offset);                \
        if (node != vb::Node::Memory) {                                                            \
            errno = ENODEV;                                                                        \
            return MAP_FAILED;                                                                     \
        }                                                                                          \
        return vb::mapPage(fd, length, flags, offset, [=](int page) {                              \
            return VB_NEXT(symbol)(address, length, protection, flags, page, 0);                   \
        });                                                                                        \
    }
VB_SEAM_MMAP(mmap, off_t)
VB_SEAM_MMAP(mmap64, off64_t)

VB_SEAM(int, munmap, void *address, size_t length) {
    vb::forgetMapping(address);
    return VB_NEXT(munmap)(address, length);
}
