#include "virtual_board/board/folder.h"

#include "virtual_board/board/consistency.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/kernel.h"
#include "virtual_board/board/lock.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

namespace vb {

namespace {

__attribute__((format(printf, 2, 3))) bool fail(FolderError &error, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error.text, sizeof(error.text), format, arguments);
    va_end(arguments);
    return false;
}

constexpr uint32_t swapped(uint32_t value) {
    return value >> 24 | (value >> 8 & 0xFF00) | (value << 8 & 0xFF0000) | value << 24;
}

/** Whether a header is that of a board which this build can map. */
bool checkHeader(const BoardHeader &header, uint64_t fileSize, const char *path,
                 FolderError &error) {
    if (std::memcmp(header.magic, kBoardMagic, sizeof(kBoardMagic)) != 0)
        return fail(error, "%s is damaged: %s is not a board's state; create the board again", path,
                    kStateFile);
    if (header.byteOrder == swapped(kBoardByteOrder))
        return fail(error,
                    "%s was made on a machine of the other byte order; create a board with the "
                    "vboard of this build",
                    path);
    if (header.byteOrder != kBoardByteOrder || header.check != headerCheck(header))
        return fail(error,
                    "%s is damaged: the header of %s is inconsistent; create the board again", path,
                    kStateFile);
    if (header.version != kBoardVersion || header.size != sizeof(Board))
        return fail(
            error,
            "%s is a board of another version (%u, this build uses %u); create a board with "
            "the vboard of this build",
            path, header.version, kBoardVersion);
    if (fileSize != header.size)
        return fail(error, "%s is damaged: %s has %llu of %u bytes; create the board again", path,
                    kStateFile, static_cast<unsigned long long>(fileSize), header.size);
    return true;
}

/** The size of a file; 0 when it is missing. */
uint64_t sizeOf(const char *path) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    const off_t size = lseek(fd, 0, SEEK_END);
    ::close(fd);
    return size < 0 ? 0 : static_cast<uint64_t>(size);
}

} // namespace

bool BoardFolder::open(const char *path, FolderError &error) {
    close();
    if (realpath(path, path_) == nullptr)
        return fail(error, "%s: %s; create a board with: vboard create --model 0x0709 %s", path,
                    std::strerror(errno), path);
    std::snprintf(rootPath_, sizeof(rootPath_), "%s/%s", path_, kRootFolder);
    std::snprintf(lockPath_, sizeof(lockPath_), "%s/%s", path_, kLockFile);
    if (!map(path, error))
        return false;
    if (!check(path, error)) {
        close();
        return false;
    }
    for (const char *needed : {kNodePath, kMemoryPath, kCommandLinePath, kPartitionListPath}) {
        if (access(hostPath(needed).text, R_OK) != 0) {
            close();
            return fail(error,
                        "%s is damaged: %s%s is missing or unreadable; create the board again",
                        path, kRootFolder, needed);
        }
    }
    if (sizeOf(ownFile(kRegisterPageFile).text) != kMdioPageSize) {
        close();
        return fail(error, "%s is damaged: %s is missing or no page; create the board again", path,
                    kRegisterPageFile);
    }
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const FlashFileName name = flashFileName(index);
        if (sizeOf(ownFile(name.text).text) != board_->devices.flash[index].geometry.size) {
            close();
            return fail(error,
                        "%s is damaged: %s is missing or not as large as its partition; create the "
                        "board again",
                        path, name.text);
        }
    }
    return true;
}

bool BoardFolder::map(const char *path, FolderError &error) {
    const int fd = ::open(ownFile(kStateFile).text, O_RDWR | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT)
        return fail(error, "%s is not a board: it has no %s; create one with: vboard create", path,
                    kStateFile);
    if (fd < 0)
        return fail(error, "%s: cannot open %s for reading and writing: %s", path, kStateFile,
                    std::strerror(errno));

    BoardHeader header = {};
    const ssize_t headerSize = pread(fd, &header, sizeof(header), 0);
    const off_t fileSize = lseek(fd, 0, SEEK_END);
    bool isUsable = false;
    if (headerSize != static_cast<ssize_t>(sizeof(header)))
        fail(error, "%s is damaged: %s is too short; create the board again", path, kStateFile);
    else
        isUsable = checkHeader(header, static_cast<uint64_t>(fileSize), path, error);
    if (isUsable) {
        void *memory = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (memory != MAP_FAILED)
            board_ = static_cast<Board *>(memory);
        else
            fail(error, "%s: cannot map %s: %s", path, kStateFile, std::strerror(errno));
    }
    ::close(fd);
    return board_ != nullptr;
}

/** Judges the state while nobody changes it. */
bool BoardFolder::check(const char *path, FolderError &error) {
    const BoardLock lock(*this);
    if (!lock.isHeld())
        return fail(error, "%s: cannot open %s for reading and writing: %s", path, kLockFile,
                    std::strerror(errno));
    if (const char *part = damagedPart(*board_, hostNow()); part != nullptr)
        return fail(error, "%s is damaged: %s holds impossible values (%s); create the board again",
                    path, kStateFile, part);
    mendBoard(*board_);
    return true;
}

void BoardFolder::close() {
    if (board_ != nullptr)
        munmap(board_, sizeof(Board));
    board_ = nullptr;
}

HostPathBuffer BoardFolder::hostPath(const char *boardPath) const {
    HostPathBuffer path;
    std::snprintf(path.text, sizeof(path.text), "%s%s", rootPath_, boardPath);
    return path;
}

HostPathBuffer BoardFolder::ownFile(const char *name) const {
    HostPathBuffer path;
    std::snprintf(path.text, sizeof(path.text), "%s/%s", path_, name);
    return path;
}

int BoardFolder::openOwnFile(const char *name, int flags) const {
    const int folder = kernel::open(path_, O_PATH | O_DIRECTORY);
    const int fd = kernel::openAt(folder, name, flags);
    kernel::close(folder);
    return fd;
}

HostPathBuffer BoardFolder::flashNode(uint32_t index) const {
    char boardPath[sizeof(kFlashNodePrefix) + 10];
    std::snprintf(boardPath, sizeof(boardPath), "%s%u", kFlashNodePrefix, kFlashNumbers[index]);
    return hostPath(boardPath);
}

uint64_t hostNow() {
    timespec now = {};
    timespec_get(&now, TIME_UTC); // the seam leaves it alone: it is the host's time in any case
    return static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
}

} // namespace vb
