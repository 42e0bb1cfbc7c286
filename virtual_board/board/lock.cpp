#include "virtual_board/board/lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace vb {

BoardLock::BoardLock(const BoardFolder &folder)
    : fd_(::open(folder.ownFile(kLockFile).text, O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

BoardLock::~BoardLock() {
    if (fd_ < 0)
        return;
    // Explicitly, because a child forked meanwhile by another thread shares the lock.
    flock(fd_, LOCK_UN);
    ::close(fd_);
}

} // namespace vb
