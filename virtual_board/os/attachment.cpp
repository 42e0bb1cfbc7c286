#include "virtual_board/os/board_files.h"
#include "virtual_board/os/path_glance.h"
#include "virtual_board/os/programs_clock.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/timers.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <pthread.h>

namespace vb {

namespace {

// Never destroyed: programs reach the seam before and after main.
alignas(BoardFolder) unsigned char folderMemory[sizeof(BoardFolder)];
BoardFolder *attached = nullptr;
pthread_once_t childrenAreNoted = PTHREAD_ONCE_INIT;

/** Who steps the board's clock waits for this process, too. */
void noteProcess() {
    if (attached == nullptr)
        return;
    const BoardLock lock(*attached, BoardLock::Use::Looks);
    if (lock.isHeld())
        noteProgram(attached->board()->waiters, getpid());
}

void noteChild() {
    forgetTimersOfParent();
    noteProcess();
}

void noteChildren() {
    pthread_atfork(nullptr, nullptr, noteChild);
}

} // namespace

bool attachBoard(const char *path, FolderError &error) {
    detachBoard();
    findNextDefinitions();
    prepareGlances();
    auto *folder = new (folderMemory) BoardFolder;
    if (!folder->open(path, error))
        return false;
    if (!learnNodes(*folder)) {
        std::snprintf(error.text, sizeof(error.text), "%s: %s cannot be examined", path, kNodePath);
        return false;
    }
    goByBoard();
    attached = folder;
    noteProcess();
    pthread_once(&childrenAreNoted, noteChildren);
    return true;
}

void detachBoard() {
    forgetNodes();
    if (attached != nullptr)
        attached->close();
    attached = nullptr;
}

const BoardFolder *attachedFolder() {
    return attached;
}

HostPath::HostPath(const char *path, LastLink last, int folder, Use use) : path_(path) {
    if (attached == nullptr || path == nullptr)
        return;
    const int savedErrno = errno;
    if (kernel::isReadable(path))
        find(folder, last, use);
    else
        error_ = EFAULT;
    errno = savedErrno;
}

void HostPath::find(int folder, LastLink last, Use use) {
    const bool isWithinBoard = use == Use::Opened && path_[0] != '/' && isBoardExpected() &&
                               mayBeOnBoard(*attached, folder);
    if (isWithinBoard || !leadsPastBoard(*attached, folder, path_, last))
        walk(folder, last);
}

void HostPath::walk(int folder, LastLink last) {
    auto *memory = static_cast<WalkMemory *>(scratch_.take());
    if (memory == nullptr) {
        error_ = ENOMEM;
        return;
    }
    const PathWalk walk(*attached, *memory, folder, path_, last);
    switch (walk.end()) {
    case PathWalk::End::Host:
        if (walk.isInFolder())
            expectBoard(); // hands that reach into the folder come to the nodes' places
        scratch_.giveBack();
        break;
    case PathWalk::End::Board:
        expectBoard();
        boardPath_ = walk.boardPath();
        path_ = walk.hostPath();
        break;
    case PathWalk::End::Beyond:
        path_ = walk.hostPath();
        break;
    case PathWalk::End::Nowhere:
        error_ = walk.error();
        break;
    case PathWalk::End::Unknown:
        traceOpen(path_, EACCES); // for those who wonder why it is refused
        error_ = EACCES;
        break;
    }
}

bool HostPath::isOfKernel() const {
    constexpr char kNodes[] = "/dev/";
    constexpr char kInformation[] = "/proc/";
    return isOfBoard() && (std::strncmp(boardPath_, kNodes, sizeof(kNodes) - 1) == 0 ||
                           std::strncmp(boardPath_, kInformation, sizeof(kInformation) - 1) == 0);
}

} // namespace vb
