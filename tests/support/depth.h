#pragma once
// How far tests go that could go on for ever.

#include <cstdlib>

/** Emulated, other 32-bit and sanitized programs take several times as long. */
#if defined(BSP_TEST_SANITIZED) || __SIZEOF_POINTER__ < 8
constexpr bool kIsSlowBuild = true;
#else
constexpr bool kIsSlowBuild = false;
#endif

/** Whether the long way is asked for, as 'scripts/test full' does. */
inline bool isThorough() {
    return std::getenv("BSP_TEST_THOROUGH") != nullptr;
}

/** One of the depths of a test: the usual one, and the thorough one, on usual and on slow builds.
 */
template <typename Depth>
Depth depthOf(Depth usual, Depth usualOnSlow, Depth thorough, Depth thoroughOnSlow) {
    if (isThorough())
        return kIsSlowBuild ? thoroughOnSlow : thorough;
    return kIsSlowBuild ? usualOnSlow : usual;
}
