#include "virtual_board/board/paths.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <sys/stat.h>

namespace vb {

namespace {

// Never destroyed: programs reach the seam before and after main.
alignas(BoardFolder) unsigned char folderMemory[sizeof(BoardFolder)];
BoardFolder *attached = nullptr;
dev_t nodeDevice;
ino_t nodeInode;

} // namespace

bool attachBoard(const char *path, FolderError &error) {
    detachBoard();
    auto *folder = new (folderMemory) BoardFolder;
    struct stat info = {};
    if (!folder->open(path, error))
        return false;
    if (stat(folder->hostPath(kNodePath).text, &info) != 0) {
        std::strcpy(error.text, "the board's driver node cannot be examined");
        return false;
    }
    nodeDevice = info.st_dev;
    nodeInode = info.st_ino;
    attached = folder;
    return true;
}

void detachBoard() {
    if (attached != nullptr)
        attached->close();
    attached = nullptr;
}

const BoardFolder *attachedFolder() {
    return attached;
}

bool isDriverNode(int fd) {
    const int savedErrno = errno;
    struct stat info = {};
    const bool isNode = attached != nullptr && fstat(fd, &info) == 0 && info.st_dev == nodeDevice &&
                        info.st_ino == nodeInode;
    errno = savedErrno;
    return isNode;
}

HostPath::HostPath(const char *path) : path_(path) {
    if (attached == nullptr || path == nullptr || path[0] != '/')
        return;
    isOfBoard_ = tidyPath(path, boardPath_) && isBoardPath(boardPath_);
    if (isOfBoard_)
        buffer_ = attached->hostPath(boardPath_);
}

} // namespace vb
