#pragma once
// The C library functions through which programs reach the board. They are defined here under their
// own names, so that a program that preloads or links this seam calls them; what concerns the
// attached board is answered from it, everything else goes on to the C library.

#include "virtual_board/board/lock.h"

#include <cstddef>
#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

namespace vb {

/** Attaches this process to the board in a folder. */
bool attachBoard(const char *path, FolderError &error);
void detachBoard();

/** The attached board's folder, or null. */
const BoardFolder *attachedFolder();

/** This process at this moment, as the board's trace names it. */
inline Sender thisSender(const Board &board) {
    return {getpid(), clockNow(board.clock, hostNow())};
}

/** Whether a descriptor is one of the attached board's driver node. */
bool isDriverNode(int fd);

/** Whether a descriptor is one of the attached board's /dev/mem. */
bool isMemoryNode(int fd);

/**
 * What sleeps of a program that has mapped the page of registers do: the MDIO controller goes on.
 * The caller holds the board's lock.
 */
void pollRegisterPage(const BoardFolder &folder);

/** Which of the attached board's flash partitions a descriptor is of; kFlashPartitions: none. */
uint32_t partitionOf(int fd);

// What the C library's functions of these names do on a descriptor of a flash partition.
off64_t seekPartition(int fd, uint32_t partition, off64_t offset, int whence);
ssize_t readPartition(int fd, uint32_t partition, void *data, size_t length);
ssize_t writePartition(int fd, uint32_t partition, const void *data, size_t length);
ssize_t readPartitionAt(int fd, uint32_t partition, void *data, size_t length, off64_t offset);
ssize_t writePartitionAt(int fd, uint32_t partition, const void *data, size_t length,
                         off64_t offset);
int partitionIoctl(int fd, uint32_t partition, unsigned long code, void *argument);

/** Finds the folder of the board's own tools; false when it is not where it belongs. */
bool findTools(HostPathBuffer &tools);

/** Ends this process as a power failure does: at once. */
[[noreturn]] void cutPower();

/**
 * A path as the C library shall see it: inside the board's folder for the files that a board has of
 * its own, unchanged for all others.
 */
class HostPath {
  public:
    explicit HostPath(const char *path);

    const char *get() const { return isOfBoard_ ? buffer_.text : path_; }
    bool isOfBoard() const { return isOfBoard_; }
    /** The path on the board, free of doubled and idle parts. Only for files of the board. */
    const char *onBoard() const { return boardPath_; }

  private:
    const char *path_;
    bool isOfBoard_ = false;
    char boardPath_[kMaxBoardPath];
    HostPathBuffer buffer_;
};

/** The next definition of a function behind this one. */
inline void *nextDefinition(const char *symbol) {
    return dlsym(RTLD_NEXT, symbol);
}

} // namespace vb

// Defines a seam function. The label gives it the C library's name without the C library's
// declaration, which may differ in attributes and, on 32-bit systems, in the name it stands for.
#define VB_SEAM(type, symbol, ...)                                                                 \
    extern "C" __attribute__((visibility("default")))                                              \
    type vbSeam_##symbol(__VA_ARGS__) __asm__(#symbol);                                            \
    type vbSeam_##symbol(__VA_ARGS__)

// The C library's function behind a seam function.
#define VB_NEXT(symbol)                                                                            \
    ([] {                                                                                          \
        static void *next = ::vb::nextDefinition(#symbol);                                         \
        return reinterpret_cast<decltype(&vbSeam_##symbol)>(next);                                 \
    }())
