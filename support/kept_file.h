#pragma once
// The files that the library keeps below /tmp.

#include <fcntl.h>

namespace bsp {

/**
 * Opens such a file for reading and writing, creating it if it is missing. Where one is expected
 * another user may have put a link, behind which anybody's file lies: a link is refused.
 */
inline int openKeptFile(const char *path) {
    return open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
}

} // namespace bsp
