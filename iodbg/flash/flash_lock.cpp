#include "iodbg/flash/flash_lock.h"

#include "iodbg/core/failure.h"
#include "support/kept_file.h"

#include <cerrno>
#include <fcntl.h>

namespace iodbg {

namespace {

constexpr char kLibraryLockFile[] = "/tmp/bspFlashLockFile";

} // namespace

LibraryFlashLock::LibraryFlashLock() : file_(bsp::openKeptFile(kLibraryLockFile)) {
    struct flock wholeFile = {};
    wholeFile.l_type = F_WRLCK;
    wholeFile.l_whence = SEEK_SET;
    int result = file_.isOpen() ? 0 : -1;
    while (result == 0 && (result = fcntl(file_.get(), F_SETLKW, &wholeFile)) != 0 &&
           errno == EINTR)
        result = 0;
    if (result != 0)
        throw Failure::file(std::string("lock ") + kLibraryLockFile,
                            "see 'iodbg check', and save into a file meanwhile");
}

} // namespace iodbg
