#pragma once
// How large a file is.

#include <cstdint>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/types.h>

namespace bsp {

/** Stores the size of a file in bytes; false, and nothing stored, if it cannot be told. */
inline bool readFileSize(const char *path, off_t *size) {
#ifdef BSP_TIME_32
    // Which C libraries of 2018 have. Under its own name stat() came in 2021.
    struct statx info = {};
    if (statx(AT_FDCWD, path, 0, STATX_SIZE, &info) != 0 ||
        info.stx_size > static_cast<uint64_t>(std::numeric_limits<off_t>::max()))
        return false;
    *size = static_cast<off_t>(info.stx_size);
#else
    struct stat info = {};
    if (stat(path, &info) != 0)
        return false;
    *size = info.st_size;
#endif
    return true;
}

} // namespace bsp
