#include "tests/support/sudden_death.h"

#include "bsp.h"

#include <csignal>
#include <cstdarg>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::function<bool(LibraryCall)> diesBefore;
struct stat64 lockFileInfo = {};

void announce(LibraryCall call) {
    if (diesBefore && diesBefore(call))
        raise(SIGKILL);
}

// By identity, because the board takes its own lock several times for each request.
bool isLockFile(int fd) {
    struct stat64 info = {};
    return diesBefore && fstat64(fd, &info) == 0 && info.st_ino == lockFileInfo.st_ino &&
           info.st_dev == lockFileInfo.st_dev;
}

} // namespace

void watchCalls(const std::string &lockFile, const std::function<bool(LibraryCall)> &watcher) {
    stat64(lockFile.c_str(), &lockFileInfo);
    diesBefore = watcher;
}

void ignoreCalls() {
    diesBefore = nullptr;
}

// The linker lets these calls of the program come here first.
extern "C" {
int realFlock(int fd, int operation) __asm__("__real_flock");
ssize_t realWrite(int fd, const void *data, size_t size) __asm__("__real_write");
int realUsleep(useconds_t us) __asm__("__real_usleep");
unsigned realSleep(unsigned seconds) __asm__("__real_sleep");
int realIoctl(int fd, unsigned long request, void *argument) __asm__("__real_ioctl");

int wrappedFlock(int fd, int operation) __asm__("__wrap_flock");
ssize_t wrappedWrite(int fd, const void *data, size_t size) __asm__("__wrap_write");
int wrappedUsleep(useconds_t us) __asm__("__wrap_usleep");
unsigned wrappedSleep(unsigned seconds) __asm__("__wrap_sleep");
int wrappedIoctl(int fd, unsigned long request, ...) __asm__("__wrap_ioctl");
}

int wrappedFlock(int fd, int operation) {
    if (isLockFile(fd))
        announce(operation == LOCK_UN ? LibraryCall::Unlock : LibraryCall::Lock);
    return realFlock(fd, operation);
}

ssize_t wrappedWrite(int fd, const void *data, size_t size) {
    announce(LibraryCall::Store);
    return realWrite(fd, data, size);
}

int wrappedUsleep(useconds_t us) {
    announce(LibraryCall::Sleep);
    return realUsleep(us);
}

unsigned wrappedSleep(unsigned seconds) {
    announce(LibraryCall::Sleep);
    return realSleep(seconds);
}

int wrappedIoctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void *record = va_arg(arguments, void *);
    va_end(arguments);
    if (request == BSP_REQ_I2C_WRITE)
        announce(LibraryCall::Send);
    if (request == BSP_REQ_I2C_READ)
        announce(LibraryCall::Fetch);
    return realIoctl(fd, request, record);
}
