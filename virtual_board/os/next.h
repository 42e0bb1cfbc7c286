#pragma once
// Functions of the C library, defined once more in front of it, and the way on to the next
// definition: that of another library that is preloaded, or the C library's own.

#include <atomic>
#include <dlfcn.h>

namespace vb {

/** The definition of a function behind this one. */
struct NextDefinition {
    const char *symbol;
    std::atomic<void *> address;

    void *get() {
        void *known = address.load(std::memory_order_relaxed);
        if (known == nullptr)
            address.store(known = dlsym(RTLD_NEXT, symbol), std::memory_order_relaxed);
        return known;
    }
};

/**
 * Looks all of them up. The loader must not be asked from a signal handler that interrupts it, so
 * it is asked before the program starts.
 */
void findNextDefinitions();

} // namespace vb

// Defines a seam function. The label gives it the C library's name without the C library's
// declaration, which may differ in attributes and, on 32-bit systems, in the name it stands for.
// The way on is in a section of its own, where all of them can be found.
#define VB_SEAM(type, symbol, ...)                                                                 \
    __attribute__((section("vb_next"), used)) static vb::NextDefinition vbNext_##symbol = {        \
        #symbol, nullptr};                                                                         \
    extern "C" __attribute__((visibility("default")))                                              \
    type vbSeam_##symbol(__VA_ARGS__) __asm__(#symbol);                                            \
    type vbSeam_##symbol(__VA_ARGS__)

// The C library's function behind a seam function.
#define VB_NEXT(symbol) (reinterpret_cast<decltype(&vbSeam_##symbol)>(vbNext_##symbol.get()))
