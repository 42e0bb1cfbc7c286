#pragma once
// A system that answers the library's calls as an input says: kernel, driver, devices, files. The
// library that the targets link has its calls under other names (tests/support/system_calls.txt),
// so that nobody else's come here.

#include "fuzz/input.h"
#include "support/mtd.h"

#include <optional>

namespace hostile {

using Bytes = std::vector<uint8_t>;

/** A system, from its construction until it is taken down. There is one at a time. */
class System {
  public:
    explicit System(fuzz::Input &answers);
    System(const System &) = delete;
    System &operator=(const System &) = delete;
    /** Reports what is still open or allocated. */
    ~System();

    fuzz::Input &answers;
    bool canFail = true;       // else calls succeed, and only what they bring is the input's
    bool isMemoryValid = true; // requests carry addresses of ours
    int firstDescriptor = 3;   // 0 in programs that have closed their standard streams
    uint32_t devId = 0;        // 0: whatever the answers say
    std::optional<bsp::FlashGeometry> geometry;
    // What memories and files hold; those without hold what the answers say, and keep nothing.
    std::optional<Bytes> eeprom, flash, file;
    std::optional<Bytes> output; // what is written into files, one piece behind the other
};

} // namespace hostile
