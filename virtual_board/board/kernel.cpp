#include "virtual_board/board/kernel.h"

#include <atomic>
#include <dlfcn.h>

namespace vb::kernel {

Door door() {
    static std::atomic<void *> known;
    void *next = known.load(std::memory_order_relaxed);
    if (next == nullptr)
        known.store(next = dlsym(RTLD_NEXT, "syscall"), std::memory_order_relaxed);
    return reinterpret_cast<Door>(next);
}

} // namespace vb::kernel
