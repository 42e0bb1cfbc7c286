// Searches for the files of a pattern. The C library lists and examines by itself there, unless it
// is told how.

#include "virtual_board/os/seam.h"

#include <dirent.h>
#include <glob.h>
#include <sys/stat.h>

namespace {

using OnError = int (*)(const char *, int);

void *openFolder(const char *path) {
    return opendir(path);
}

void closeFolder(void *folder) {
    closedir(static_cast<DIR *>(folder));
}

void useSeam(glob_t &search) {
    search.gl_opendir = openFolder;
    search.gl_readdir = [](void *folder) { return readdir(static_cast<DIR *>(folder)); };
    search.gl_closedir = closeFolder;
    search.gl_lstat = lstat;
    search.gl_stat = stat;
}

void useSeam(glob64_t &search) {
    search.gl_opendir = openFolder;
    search.gl_readdir = [](void *folder) { return readdir64(static_cast<DIR *>(folder)); };
    search.gl_closedir = closeFolder;
    search.gl_lstat = lstat64;
    search.gl_stat = stat64;
}

} // namespace

#define VB_SEAM_GLOB(symbol, Search)                                                               \
    VB_SEAM(int, symbol, const char *pattern, int flags, OnError onError, Search search) {         \
        const bool isTold = (flags & GLOB_ALTDIRFUNC) != 0;                                        \
        if (vb::attachedFolder() == nullptr || isTold)                                             \
            return VB_NEXT(symbol)(pattern, flags, onError, search);                               \
        useSeam(*search);                                                                          \
        return VB_NEXT(symbol)(pattern, flags | GLOB_ALTDIRFUNC, onError, search);                 \
    }
VB_SEAM_GLOB(glob, glob_t *)
VB_SEAM_GLOB(glob64, glob64_t *)
