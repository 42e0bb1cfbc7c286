#include "virtual_board/board/paths.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <sys/stat.h>

namespace vb {

namespace {

// Never destroyed: programs reach the seam before and after main.
alignas(BoardFolder) unsigned char folderMemory[sizeof(BoardFolder)];
BoardFolder *attached = nullptr;

/** What tells a file from every other. */
struct Identity {
    bool isKnown;
    dev_t device;
    ino_t inode;
};
Identity node;
Identity memory;
Identity partitions[kFlashPartitions];

Identity identityOf(const char *hostPath) {
    struct stat info = {};
    const bool isThere = stat(hostPath, &info) == 0;
    return {isThere, info.st_dev, info.st_ino};
}

bool isSame(const Identity &identity, const struct stat &info) {
    return identity.isKnown && info.st_dev == identity.device && info.st_ino == identity.inode;
}

/** Whether a descriptor is one of a file of the attached board. */
bool isOpenFile(int fd, const Identity &identity) {
    const int savedErrno = errno;
    struct stat info = {};
    const bool isFile = attached != nullptr && fstat(fd, &info) == 0 && isSame(identity, info);
    errno = savedErrno;
    return isFile;
}

} // namespace

bool attachBoard(const char *path, FolderError &error) {
    detachBoard();
    auto *folder = new (folderMemory) BoardFolder;
    if (!folder->open(path, error))
        return false;
    node = identityOf(folder->hostPath(kNodePath).text);
    if (!node.isKnown) {
        std::snprintf(error.text, sizeof(error.text), "%s: %s cannot be examined", path, kNodePath);
        return false;
    }
    memory = identityOf(folder->hostPath(kMemoryPath).text);
    // A board may go without a partition: its node is gone then.
    for (uint32_t index = 0; index < kFlashPartitions; ++index)
        partitions[index] = identityOf(folder->flashNode(index).text);
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
    return isOpenFile(fd, node);
}

bool isMemoryNode(int fd) {
    return isOpenFile(fd, memory);
}

uint32_t partitionOf(int fd) {
    if (attached == nullptr)
        return kFlashPartitions;
    const int savedErrno = errno;
    struct stat info = {};
    uint32_t found = kFlashPartitions;
    const bool isOpen = fstat(fd, &info) == 0;
    for (uint32_t index = 0; isOpen && index < kFlashPartitions; ++index) {
        if (isSame(partitions[index], info))
            found = index;
    }
    errno = savedErrno;
    return found;
}

HostPath::HostPath(const char *path) : path_(path) {
    if (attached == nullptr || path == nullptr || path[0] != '/')
        return;
    isOfBoard_ = tidyPath(path, boardPath_) && isBoardPath(boardPath_);
    if (isOfBoard_)
        buffer_ = attached->hostPath(boardPath_);
}

} // namespace vb
