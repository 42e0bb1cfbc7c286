#include "tests/support/files.h"

#include <cstdio>
#include <ftw.h>

namespace {

std::vector<std::string> *found = nullptr; // nftw has no argument for its visitor

int note(const char *path, const struct stat64 * /*info*/, int /*type*/, FTW *place) {
    if (place->level > 0)
        found->emplace_back(path);
    return 0;
}

} // namespace

std::vector<std::string> pathsUnder(const std::string &folder) {
    constexpr int kOpenFolders = 16;
    std::vector<std::string> paths;
    found = &paths;
    nftw64(folder.c_str(), note, kOpenFolders, FTW_DEPTH | FTW_PHYS);
    found = nullptr;
    return paths;
}

void removeFolder(const std::string &folder) {
    for (const std::string &path : pathsUnder(folder))
        std::remove(path.c_str());
    std::remove(folder.c_str());
}
