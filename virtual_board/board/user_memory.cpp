#include "virtual_board/board/user_memory.h"

#include "virtual_board/board/kernel.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <sys/uio.h>

namespace vb {

namespace {

constexpr size_t kPieceOfPipe = PIPE_BUF;

/**
 * Copies through a pipe, for which the kernel looks at both addresses: on systems that do not let a
 * process transfer its own memory, as emulators do not.
 */
bool copyThroughPipe(char *to, const char *from, size_t length) {
    int ends[2];
    if (kernel::call(SYS_pipe2, ends, O_CLOEXEC) != 0)
        return false;
    bool isCopied = true;
    for (size_t done = 0; isCopied && done < length;) {
        const size_t size = std::min(length - done, kPieceOfPipe);
        const auto whole = static_cast<ssize_t>(size);
        isCopied = kernel::write(ends[1], from + done, size) == whole &&
                   kernel::read(ends[0], to + done, size) == whole;
        done += size;
    }
    kernel::close(ends[0]);
    kernel::close(ends[1]);
    return isCopied;
}

/** Copies with one of the two transfers between the memories of processes. */
bool copy(long transfer, void *own, void *user, char *to, const char *from, size_t length) {
    const int savedErrno = errno;
    const iovec here = {own, length};
    const iovec there = {user, length};
    const long count = kernel::call(transfer, getpid(), &here, 1ul, &there, 1ul, 0ul);
    const bool isServed = count >= 0 || errno == EFAULT;
    const bool isCopied =
        isServed ? count == static_cast<long>(length) : copyThroughPipe(to, from, length);
    errno = savedErrno;
    return isCopied;
}

} // namespace

bool copyFromUser(void *to, const void *from, size_t length) {
    return copy(SYS_process_vm_readv, to, const_cast<void *>(from), static_cast<char *>(to),
                static_cast<const char *>(from), length);
}

bool copyToUser(void *to, const void *from, size_t length) {
    return copy(SYS_process_vm_writev, const_cast<void *>(from), to, static_cast<char *>(to),
                static_cast<const char *>(from), length);
}

} // namespace vb
