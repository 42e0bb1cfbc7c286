#pragma once
// The files whose locks keep the processes of a board apart.

#include "support/kept_file.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace bsp {

/**
 * Opens a lock file, creating it if it is missing. Never 0, which says "no lock file" to those who
 * hold such descriptors: a descriptor of that number is moved up. A failure is reported on standard
 * error and answered as 0.
 */
inline int openLockFile(const char *path, const char *complaint) {
    int fd = openKeptFile(path);
    if (fd == 0) {
        fd = fcntl(fd, F_DUPFD_CLOEXEC, 1);
        close(0);
    }
    if (fd < 0) {
        std::perror(complaint);
        return 0;
    }
    return fd;
}

} // namespace bsp
