#include "flash/flash_lock.h"

#include "support/lock_file.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr char kLockPath[] = "/tmp/bspFlashLockFile";
constexpr int32_t kTake = 1;
constexpr int32_t kRelease = 2;
constexpr int kAttempts = 100;
constexpr useconds_t kPauseUs = 2; // after a failed attempt

} // namespace

int32_t bsp_flash_lock_set(int32_t fd, int32_t type) {
    struct flock wholeFile = {};
    wholeFile.l_type = type == kTake ? F_WRLCK : F_UNLCK;
    wholeFile.l_whence = SEEK_SET;
    wholeFile.l_start = 0;
    wholeFile.l_len = 0;
    wholeFile.l_pid = -1;
    // The call waits for whoever holds the lock; what fails and is tried again is the call itself.
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (fcntl(fd, F_SETLKW, &wholeFile) >= 0)
            return 0;
        usleep(kPauseUs);
    }
    std::printf("%s failed: type=%d, retry_times=%d \n", __func__, type, kAttempts);
    return 1;
}

int32_t bsp_flash_lock_get(int32_t *lockResult) {
    const int fd = bsp::openLockFile(kLockPath, "open /tmp/bspFlashLockFile error \n");
    if (fd == 0)
        return 0;
    const int32_t result = bsp_flash_lock_set(fd, kTake);
    if (lockResult != nullptr)
        *lockResult = result;
    return fd;
}

void bsp_flash_lock_release(int32_t fd) {
    if (fd == 0)
        return;
    bsp_flash_lock_set(fd, kRelease);
    close(fd);
}
