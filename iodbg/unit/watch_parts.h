#pragma once
// The parts of a unit that `iodbg watch` looks at.

#include "iodbg/core/command.h"

#include <cstdint>

namespace iodbg {

/** Named as in the answers for programs. */
enum class WatchedPart : uint8_t { Climate, Fans, Supplies, Poe, Sfp, Clock, Panel };
constexpr size_t kWatchedParts = 7;

class WatchedParts {
  public:
    /** All of them. */
    WatchedParts() = default;

    void clear() { bits_ = 0; }
    void add(WatchedPart part) { bits_ |= 1u << static_cast<unsigned>(part); }
    bool has(WatchedPart part) const { return (bits_ >> static_cast<unsigned>(part) & 1) != 0; }

  private:
    uint32_t bits_ = (1u << kWatchedParts) - 1;
};

/** Takes names with commas between them: "poe,fans". */
Parser partsParser(WatchedParts &target);
/** "climate|fans|..." */
std::string partWords();

} // namespace iodbg
