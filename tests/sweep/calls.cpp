#include "tests/sweep/calls.h"

#include "bsp.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace {

using sweep::Failure;
using sweep::Outcome;

constexpr int kNotFailing = -1;
constexpr int32_t kRefused = -5; // the kernel module's own code
constexpr int kExitStatus1 = 1 << 8;

Failure failure;
Outcome run;
std::set<int> descriptors;
std::set<std::FILE *> files;
std::set<void *> memory;
std::set<void *> mappings;

/** The way in which this call is to fail, or kNotFailing. */
int wayOf(const char *name, uint32_t ways) {
    ++run.calls;
    const bool isNth = run.calls == failure.nth;
    if (isNth) {
        run.ways = ways;
        run.failedCall = name;
    }
    const bool fails = isNth || (failure.stays && failure.nth != 0 && run.calls > failure.nth);
    return fails ? static_cast<int>(failure.way < ways ? failure.way : 0) : kNotFailing;
}

template <typename Result>
Result failed(int error, Result result) {
    errno = error;
    return result;
}

int opened(int fd) {
    if (fd >= 0)
        descriptors.insert(fd);
    return fd;
}

void *allocated(void *block) {
    if (block != nullptr)
        memory.insert(block);
    return block;
}

} // namespace

void sweep::begin(const Failure &wanted) {
    failure = wanted;
    run = {};
    descriptors.clear();
    files.clear();
    memory.clear();
    mappings.clear();
}

Outcome sweep::end() {
    failure = {};
    run.openDescriptors = static_cast<uint32_t>(descriptors.size());
    run.openFiles = static_cast<uint32_t>(files.size());
    run.allocations = static_cast<uint32_t>(memory.size());
    run.mappings = static_cast<uint32_t>(mappings.size());
    return run;
}

// The names that the library has for them.
extern "C" {
int swept_open(const char *path, int flags, ...);
int swept_close(int fd);
int swept_fcntl(int fd, int command, ...);
int swept_flock(int fd, int operation);
int swept_ioctl(int fd, unsigned long request, ...);
ssize_t swept_read(int fd, void *data, size_t size);
ssize_t swept_write(int fd, const void *data, size_t size);
off_t swept_lseek(int fd, off_t offset, int whence);
int swept_stat(const char *path, struct stat *info);
std::FILE *swept_fopen(const char *path, const char *mode);
size_t swept_fread(void *data, size_t size, size_t count, std::FILE *file);
char *swept_fgets(char *line, int size, std::FILE *file);
int swept_fclose(std::FILE *file);
void *swept_malloc(size_t size);
void *swept_calloc(size_t count, size_t size);
void swept_free(void *block);
int swept_system(const char *command);
void *swept_mmap(void *address, size_t size, int access, int flags, int fd, off_t offset);
int swept_munmap(void *address, size_t size);
int swept_usleep(useconds_t us);
int swept_clock_settime(clockid_t clock, const void *time);
int swept_clock_settime64(clockid_t clock, const void *time);

// The seam's own, not the library's.
int wrappedYield() __asm__("__wrap_sched_yield");

// The seam's calls of these names, whose times are of the size that the name stands for.
int setClock(clockid_t clock, const void *time) __asm__("clock_settime");
int setClock64(clockid_t clock, const void *time) __asm__("__clock_settime64");
}

int swept_open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return wayOf("open", 1) == 0 ? failed(EMFILE, -1) : opened(open(path, flags, mode));
}

int swept_close(int fd) {
    const int way = wayOf("close", 1);
    if (fd >= 0 && descriptors.erase(fd) == 0)
        ++run.strayCloses;
    const int result = close(fd); // the descriptor is gone also when closing reports an error
    return way == 0 ? failed(EIO, -1) : result;
}

int swept_fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (wayOf("fcntl", 1) == 0)
        return failed(ENOLCK, -1);
    const int result = fcntl(fd, command, argument);
    return command == F_DUPFD_CLOEXEC ? opened(result) : result;
}

int swept_flock(int fd, int operation) {
    return wayOf("flock", 1) == 0 ? failed(ENOLCK, -1) : flock(fd, operation);
}

int swept_ioctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    const bool isDrivers = request >= BSP_REQ_CPLD_READ && request <= BSP_REQ_CPLD_UPGRADE;
    switch (wayOf("ioctl", isDrivers ? 2 : 1)) {
    case 0:
        return failed(EIO, -1);
    case 1: // the driver takes the request and refuses what it asks for
        static_cast<BspIoctlRecord *>(argument)->result = kRefused;
        return 0;
    default:
        return ioctl(fd, request, argument);
    }
}

ssize_t swept_read(int fd, void *data, size_t size) {
    switch (wayOf("read", 3)) {
    case 0:
        return failed(EIO, ssize_t{-1});
    case 1:
        return 0;
    case 2:
        return read(fd, data, size - 1);
    default:
        return read(fd, data, size);
    }
}

ssize_t swept_write(int fd, const void *data, size_t size) {
    switch (wayOf("write", 3)) {
    case 0:
        return failed(EIO, ssize_t{-1});
    case 1:
        return 0;
    case 2:
        return write(fd, data, size - 1);
    default:
        return write(fd, data, size);
    }
}

off_t swept_lseek(int fd, off_t offset, int whence) {
    return wayOf("lseek", 1) == 0 ? failed(EINVAL, off_t{-1}) : lseek(fd, offset, whence);
}

int swept_stat(const char *path, struct stat *info) {
    return wayOf("stat", 1) == 0 ? failed(EACCES, -1) : stat(path, info);
}

std::FILE *swept_fopen(const char *path, const char *mode) {
    if (wayOf("fopen", 1) == 0)
        return failed(EMFILE, static_cast<std::FILE *>(nullptr));
    std::FILE *file = std::fopen(path, mode);
    if (file != nullptr)
        files.insert(file);
    return file;
}

size_t swept_fread(void *data, size_t size, size_t count, std::FILE *file) {
    switch (wayOf("fread", 2)) {
    case 0:
        return 0;
    case 1:
        return std::fread(data, size, count - 1, file);
    default:
        return std::fread(data, size, count, file);
    }
}

char *swept_fgets(char *line, int size, std::FILE *file) {
    return wayOf("fgets", 1) == 0 ? failed(EIO, static_cast<char *>(nullptr))
                                  : std::fgets(line, size, file);
}

int swept_fclose(std::FILE *file) {
    const int way = wayOf("fclose", 1);
    files.erase(file);
    const int result = std::fclose(file);
    return way == 0 ? failed(EIO, EOF) : result;
}

void *swept_malloc(size_t size) {
    return wayOf("malloc", 1) == 0 ? nullptr : allocated(std::malloc(size));
}

void *swept_calloc(size_t count, size_t size) {
    return wayOf("calloc", 1) == 0 ? nullptr : allocated(std::calloc(count, size));
}

void swept_free(void *block) {
    memory.erase(block);
    std::free(block);
}

int swept_system(const char *command) {
    switch (wayOf("system", 2)) {
    case 0:
        return failed(EAGAIN, -1); // no process could be made
    case 1:
        return kExitStatus1;
    default:
        return std::system(command);
    }
}

void *swept_mmap(void *address, size_t size, int access, int flags, int fd, off_t offset) {
    if (wayOf("mmap", 1) == 0)
        return failed(EPERM, MAP_FAILED);
    void *mapping = mmap(address, size, access, flags, fd, offset);
    if (mapping != MAP_FAILED)
        mappings.insert(mapping);
    return mapping;
}

int swept_munmap(void *address, size_t size) {
    const int way = wayOf("munmap", 1);
    mappings.erase(address);
    const int result = munmap(address, size); // the mapping is gone also when this reports an error
    return way == 0 ? failed(EINVAL, -1) : result;
}

// No sleep fails, but the MDIO controller may do its work meanwhile, or not, or wrongly.
int swept_usleep(useconds_t us) {
    if (mappings.empty())
        return usleep(us);
    vb::MdioState &controller = vb::attachedFolder()->board()->devices.mdio.state;
    if (controller == vb::MdioState::Stuck)
        return 0; // for good: thousands of polls need not ask
    switch (wayOf("controller", 2)) {
    case 0:
        controller = vb::MdioState::Stuck;
        break;
    case 1:
        controller = vb::MdioState::Error;
        break;
    default:
        break;
    }
    return usleep(us);
}

int swept_clock_settime(clockid_t clock, const void *time) {
    return wayOf("clock_settime", 1) == 0 ? failed(EPERM, -1) : setClock(clock, time);
}

// Its name on 32-bit systems.
int swept_clock_settime64(clockid_t clock, const void *time) {
    return wayOf("clock_settime", 1) == 0 ? failed(EPERM, -1) : setClock64(clock, time);
}

// Nobody else is on the board to yield to. On a busy machine each of some hundred thousand sleeps
// would cost a time slice.
int wrappedYield() {
    return 0;
}
