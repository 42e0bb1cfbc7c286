#pragma once
// The parser of TOML. One source has its code.

#include "virtual_board/command/scenario.h"

namespace vboard {

/** The parser takes some wrong files for mistakes of its own. */
struct Stumbled {};

[[noreturn]] inline void stumble() {
    throw Stumbled();
}

} // namespace vboard

// In every build, since it otherwise builds upon what it has asserted.
#undef NDEBUG
#define TOML_HEADER_ONLY 0
#define TOML_MAX_NESTED_VALUES 16
#define TOML_ASSERT(condition) ((condition) ? void() : vboard::stumble())
#include <toml++/toml.h>

namespace vboard {

inline Place placeOf(const toml::source_position &position) {
    return {position.line, position.column};
}

template <typename Sourced>
Place placeOf(const Sourced &item) {
    return placeOf(item.source().begin);
}

} // namespace vboard
