#include "tests/support/files.h"

#include <cstdio>
#include <fcntl.h>
#include <ftw.h>
#include <unistd.h>

namespace {

std::vector<std::string> *foundPaths = nullptr; // nftw has no argument for its visitor

int note(const char *path, const struct stat64 * /*info*/, int /*type*/, FTW *place) {
    if (place->level > 0)
        foundPaths->emplace_back(path);
    return 0;
}

} // namespace

std::vector<std::string> pathsUnder(const std::string &folder) {
    constexpr int kOpenFolders = 16;
    std::vector<std::string> paths;
    foundPaths = &paths;
    nftw64(folder.c_str(), note, kOpenFolders, FTW_DEPTH | FTW_PHYS);
    foundPaths = nullptr;
    return paths;
}

std::string bytesOutsideHoles(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::string bytes;
    off_t start = 0;
    while ((start = lseek(fd, start, SEEK_DATA)) >= 0) {
        const off_t end = lseek(fd, start, SEEK_HOLE);
        const size_t known = bytes.size();
        bytes.resize(known + static_cast<size_t>(end - start));
        if (pread(fd, bytes.data() + known, bytes.size() - known, start) != end - start)
            break;
        start = end;
    }
    close(fd);
    return bytes;
}

void removeFolder(const std::string &folder) {
    for (const std::string &path : pathsUnder(folder))
        std::remove(path.c_str());
    std::remove(folder.c_str());
}
