#include "virtual_board/board/paths.h"

#include <cstddef>
#include <cstring>

namespace vb {

bool isBoardPath(const char *path) {
    for (const char *own : kSingleBoardPaths) {
        if (std::strcmp(path, own) == 0)
            return true;
    }
    // No program of a board shall reach a partition of the host, whatever its number.
    if (std::strncmp(path, kFlashNodePrefix, std::strlen(kFlashNodePrefix)) == 0)
        return true;
    const size_t folderLength = std::strlen(kSharedFolderPath);
    return std::strncmp(path, kSharedFolderPath, folderLength) == 0 &&
           (path[folderLength] == '/' || path[folderLength] == '\0');
}

bool goesUp(const char *path) {
    for (const char *dots = std::strstr(path, ".."); dots != nullptr;
         dots = std::strstr(dots + 1, "..")) {
        const bool isStart = dots == path || dots[-1] == '/';
        if (isStart && (dots[2] == '/' || dots[2] == '\0'))
            return true;
    }
    return false;
}

bool tidyPath(const char *path, char (&buffer)[kMaxBoardPath]) {
    size_t length = 0;
    for (const char *part = path + std::strspn(path, "/"); *part != '\0';) {
        const size_t partLength = std::strcspn(part, "/");
        const bool isHere = partLength == 1 && part[0] == '.';
        const bool isParent = partLength == 2 && part[0] == '.' && part[1] == '.';
        if (isParent) {
            while (length > 0 && buffer[--length] != '/') {
            }
        } else if (!isHere) {
            if (length + 1 + partLength >= sizeof(buffer))
                return false;
            buffer[length++] = '/';
            std::memcpy(buffer + length, part, partLength);
            length += partLength;
        }
        part += partLength;
        part += std::strspn(part, "/");
    }
    buffer[length] = '\0';
    return true;
}

} // namespace vb
