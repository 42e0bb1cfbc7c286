#include "tracer/device_files.h"

#include "virtual_board/board/paths.h"

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tracer {

namespace {

// The kernel's list of devices has them.
constexpr unsigned kMemoryMajor = 1;
constexpr unsigned kMemoryMinor = 1;
constexpr unsigned kFlashMajor = 90; // two minors for each partition

constexpr int kMostInherited = 64;

std::atomic<uint32_t> driverNumber; // 0: not known
std::atomic<bool> hasSeenFlash;

DeviceFound deviceWith(const struct stat64 &info) {
    if (!S_ISCHR(info.st_mode))
        return {};
    if (major(info.st_rdev) == kFlashMajor)
        return {Device::Flash, static_cast<uint8_t>(minor(info.st_rdev) / 2)};
    if (major(info.st_rdev) == kMemoryMajor && minor(info.st_rdev) == kMemoryMinor)
        return {Device::Memory};
    const uint32_t driver = driverNumber.load(std::memory_order_relaxed);
    const bool isDriver = driver != 0 && static_cast<uint32_t>(info.st_rdev) == driver;
    return {isDriver ? Device::Driver : Device::None};
}

template <typename Examine>
void learnDriver(Examine examine) {
    struct stat64 info = {};
    if (examine(info) && S_ISCHR(info.st_mode))
        driverNumber.store(static_cast<uint32_t>(info.st_rdev), std::memory_order_relaxed);
}

} // namespace

void learnDevices() {
    learnDriver([](struct stat64 &info) { return stat64(vb::kNodePath, &info) == 0; });
    for (int fd = 0; fd < kMostInherited; ++fd) {
        if (deviceOf(fd).device == Device::Flash)
            hasSeenFlash.store(true, std::memory_order_relaxed);
    }
}

DeviceFound deviceOf(int fd) {
    struct stat64 info = {};
    const int savedErrno = errno;
    const bool isKnown = fstat64(fd, &info) == 0;
    errno = savedErrno;
    return isKnown ? deviceWith(info) : DeviceFound{};
}

bool mayHaveFlash() {
    return hasSeenFlash.load(std::memory_order_relaxed);
}

void expectFlash() {
    hasSeenFlash.store(true, std::memory_order_relaxed);
}

void expectDriver(int fd) {
    if (driverNumber.load(std::memory_order_relaxed) == 0)
        learnDriver([fd](struct stat64 &info) { return fstat64(fd, &info) == 0; });
}

bool isOfBoard(const char *path, char (&tidy)[kLongestPath]) {
    static_assert(kLongestPath == vb::kMaxBoardPath);
    return path[0] == '/' && vb::tidyPath(path, tidy) && vb::isBoardPath(tidy);
}

} // namespace tracer
