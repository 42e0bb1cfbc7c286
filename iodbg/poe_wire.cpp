#include "iodbg/poe_wire.h"

#include "bsp.h"

#include <cstdarg>
#include <dlfcn.h>
#include <optional>
#include <sys/ioctl.h>
#include <utility>

namespace iodbg {

namespace {

constexpr uint64_t kPoeBus = 16; // bus 16, channel 0
constexpr uint64_t kPoeDevice = 0x20;

PoeWatcher watching;

std::optional<PoeDirection> directionOf(unsigned long request, const BspIoctlRecord &record) {
    if (record.slot[0] != kPoeBus || record.slot[1] != kPoeDevice || record.result != BSP_OK)
        return {};
    if (request == BSP_REQ_I2C_WRITE)
        return PoeDirection::ToController;
    if (request == BSP_REQ_I2C_READ)
        return PoeDirection::FromController;
    return {};
}

void tellOf(unsigned long request, const BspIoctlRecord &record) {
    if (const auto direction = directionOf(request, record); direction.has_value())
        watching(*direction,
                 {reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(record.slot[4])),
                  static_cast<size_t>(record.slot[5])});
}

} // namespace

PoeWatch::PoeWatch(PoeWatcher watcher) {
    watching = std::move(watcher);
}

PoeWatch::~PoeWatch() {
    watching = nullptr;
}

} // namespace iodbg

/**
 * The library's requests to the kernel module pass through here: a program's own function comes
 * before the C library's. They go on unchanged, and so do all other requests.
 */
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    using Ioctl = int (*)(int, unsigned long, ...);
    static const auto next = reinterpret_cast<Ioctl>(dlsym(RTLD_NEXT, "ioctl"));
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    const int result = next(fd, request, argument);
    if (iodbg::watching && result >= 0 && argument != nullptr)
        iodbg::tellOf(request, *static_cast<const BspIoctlRecord *>(argument));
    return result;
}
