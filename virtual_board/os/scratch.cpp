#include "virtual_board/os/scratch.h"

#include "virtual_board/board/kernel.h"

#include <atomic>
#include <iterator>
#include <sys/mman.h>

namespace vb {

namespace {

/** A piece of memory that is always there. */
struct Place {
    alignas(16) char bytes[Scratch::kSize];
    std::atomic<bool> isTaken;
};

// As many as a program's threads and handlers usually need at once. The others get theirs from the
// system.
Place places[4];

void *takePlace() {
    for (Place &place : places) {
        if (!place.isTaken.exchange(true, std::memory_order_acquire))
            return place.bytes;
    }
    return nullptr;
}

bool isBackInPlace(const void *memory) {
    for (Place &place : places) {
        if (memory != place.bytes)
            continue;
        place.isTaken.store(false, std::memory_order_release);
        return true;
    }
    return false;
}

void *fromSystem() {
#ifdef SYS_mmap2
    constexpr long kMap = SYS_mmap2;
#else
    constexpr long kMap = SYS_mmap;
#endif
    const long address = kernel::call(kMap, nullptr, Scratch::kSize, PROT_READ | PROT_WRITE,
                                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return address == -1 ? nullptr : reinterpret_cast<void *>(address);
}

} // namespace

void *Scratch::take() {
    memory_ = takePlace();
    if (memory_ == nullptr)
        memory_ = fromSystem();
    return memory_;
}

void Scratch::giveBack() {
    if (memory_ != nullptr && !isBackInPlace(memory_))
        kernel::call(SYS_munmap, memory_, kSize);
    memory_ = nullptr;
}

} // namespace vb
