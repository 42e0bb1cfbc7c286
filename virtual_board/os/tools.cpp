// Where the board's own tools are, from the place of the file that this code was loaded from:
// beside the library, or one folder above a program that has the seam linked in.

#include "virtual_board/os/seam.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace vb {

namespace {

/** The path of the file with this code; false when it cannot be told. */
bool findThisFile(char (&path)[PATH_MAX]) {
    Dl_info info = {};
    const bool isKnown = dladdr(reinterpret_cast<const void *>(&findTools), &info) != 0;
    if (isKnown && info.dli_fname != nullptr && info.dli_fname[0] == '/')
        return realpath(info.dli_fname, path) != nullptr;
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (length < 0)
        return false;
    path[length] = '\0';
    return true;
}

} // namespace

bool findTools(HostPathBuffer &tools) {
    char path[PATH_MAX];
    if (!findThisFile(path))
        return false;
    for (int level = 0; level < 2; ++level) {
        char *name = std::strrchr(path, '/');
        if (name == nullptr)
            return false;
        *name = '\0';
        std::snprintf(tools.text, sizeof(tools.text), "%s/%s", path, kToolFolder);
        if (access(tools.text, X_OK) == 0)
            return true;
    }
    return false;
}

} // namespace vb
