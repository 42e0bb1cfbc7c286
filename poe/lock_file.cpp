#include "poe/lock_file.h"

#include "support/lock_file.h"

#include <sys/file.h>
#include <unistd.h>

namespace {
constexpr char kLockPath[] = "/tmp/bspPoeLockFile";
}

int32_t bspPoeLockFileOpen(int32_t *lockResult) {
    const int fd = bsp::openLockFile(kLockPath, "open /tmp/bspPoeLockFile error \n");
    if (fd == 0)
        return 0;
    const int32_t result = flock(fd, LOCK_EX);
    if (lockResult != nullptr)
        *lockResult = result;
    return fd;
}

void bspPoeLockFileClose(int32_t fd) {
    if (fd == 0)
        return;
    flock(fd, LOCK_UN);
    close(fd);
}

uint8_t bspPoeSeqNumNext(int32_t fd, uint8_t *counter) {
    if (fd < 1)
        return counter != nullptr ? ++*counter : uint8_t{0};
    uint8_t number = 0;
    // A file that nobody has seeded stays empty, and its frames all carry 0.
    if (lseek(fd, 0, SEEK_SET) != 0 || read(fd, &number, 1) != 1)
        return 0;
    ++number;
    lseek(fd, 0, SEEK_SET);
    [[maybe_unused]] const ssize_t written = write(fd, &number, 1);
    return number;
}
