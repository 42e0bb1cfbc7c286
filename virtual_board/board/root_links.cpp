#include "virtual_board/board/root_links.h"

#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <initializer_list>

namespace vb {

namespace {

bool isLink(const char *hostPath) {
    char nothing = '\0';
    return kernel::readLink(AT_FDCWD, hostPath, &nothing, sizeof(nothing)) >= 0;
}

/** Whether a path goes up behind a name, which may be that of a link to anywhere. */
bool goesUpAgain(const char *target) {
    return goesUp(target + std::strspn(target, "./"));
}

/** Looks at what hands or programs have put in a folder and below; true when a link leads out. */
bool findLinkOut(const BoardFolder &folder, const char *boardFolder, HostPathBuffer &found) {
    DIR *entries = opendir(folder.hostPath(boardFolder).text);
    if (entries == nullptr)
        return false;
    bool isOut = false;
    const dirent64 *entry = nullptr; // positions may need 64 bits everywhere
    while (!isOut && (entry = readdir64(entries)) != nullptr) {
        char path[kMaxBoardPath + sizeof(entry->d_name)];
        const bool isHere = std::strcmp(entry->d_name, ".") == 0;
        const bool isAbove = std::strcmp(entry->d_name, "..") == 0;
        const bool isToBeSeen = entry->d_type != DT_REG && !isHere && !isAbove;
        const int length = std::snprintf(path, sizeof(path), "%s/%s", boardFolder, entry->d_name);
        if (!isToBeSeen || length >= static_cast<int>(kMaxBoardPath))
            continue;
        char target[kMaxBoardPath] = {};
        const HostPathBuffer place = folder.hostPath(path);
        const ssize_t size = kernel::readLink(AT_FDCWD, place.text, target, sizeof(target) - 1);
        isOut = size >= 0 && leadsOutOfBoard(boardFolder, target);
        if (isOut)
            found = place;
        else if (size < 0)
            isOut = findLinkOut(folder, path, found);
    }
    closedir(entries);
    return isOut;
}

} // namespace

bool leadsOutOfBoard(const char *boardFolder, const char *target) {
    char path[2 * kMaxBoardPath];
    char tidy[kMaxBoardPath];
    const bool isAbsolute = target[0] == '/';
    const int length =
        std::snprintf(path, sizeof(path), "%s/%s", isAbsolute ? "" : boardFolder, target);
    return length >= static_cast<int>(sizeof(path)) || goesUpAgain(target) ||
           !tidyPath(path, tidy) || !isBoardPath(tidy);
}

HostPathBuffer linkOutOfBoard(const BoardFolder &folder) {
    // What the board has itself is never a link.
    for (const char *own : {"", "/dev", "/proc", "/tmp", kNodePath, kMemoryPath, kCommandLinePath,
                            kPartitionListPath}) {
        const HostPathBuffer place = folder.hostPath(own);
        if (isLink(place.text))
            return place;
    }
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const HostPathBuffer place = folder.flashNode(index);
        if (isLink(place.text))
            return place;
    }
    HostPathBuffer found = {};
    findLinkOut(folder, "", found);
    return found;
}

} // namespace vb
