#include "virtual_board/os/next.h"

// The linker's names for the two ends of the section.
extern "C" {
extern vb::NextDefinition vbFirstNext[] __asm__("__start_vb_next")
    __attribute__((visibility("hidden")));
extern vb::NextDefinition vbEndOfNext[] __asm__("__stop_vb_next")
    __attribute__((visibility("hidden")));
}

namespace vb {

void findNextDefinitions() {
    for (NextDefinition *next = vbFirstNext; next != vbEndOfNext; ++next)
        next->get();
    dlerror(); // no system has all of them, and nobody shall be told
}

} // namespace vb
