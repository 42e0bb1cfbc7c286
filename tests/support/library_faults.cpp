#include "tests/support/library_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/file.h>

LibraryFaults libraryFaults;

namespace {

bool isPoeLockFile(int fd) {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
    return path.filename() == "bspPoeLockFile";
}

} // namespace

// The linker lets these calls of the program come here first.
extern "C" {
int realFlock(int fd, int operation) __asm__("__real_flock");
void *realMalloc(size_t size) __asm__("__real_malloc");
size_t realFread(void *data, size_t size, size_t count, std::FILE *file) __asm__("__real_fread");

int wrappedFlock(int fd, int operation) __asm__("__wrap_flock");
void *wrappedMalloc(size_t size) __asm__("__wrap_malloc");
size_t wrappedFread(void *data, size_t size, size_t count, std::FILE *file) __asm__("__wrap_fread");
}

int wrappedFlock(int fd, int operation) {
    if (!libraryFaults.flockFails || operation != LOCK_EX || !isPoeLockFile(fd))
        return realFlock(fd, operation);
    errno = ENOLCK;
    return -1;
}

void *wrappedMalloc(size_t size) {
    return size != libraryFaults.refusedAllocation ? realMalloc(size) : nullptr;
}

size_t wrappedFread(void *data, size_t size, size_t count, std::FILE *file) {
    return realFread(data, size, count - std::min(count, libraryFaults.lostBytes), file);
}
