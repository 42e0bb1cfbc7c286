#pragma once
// Diagnostics on standard output, in the two prefix styles that callers and log filters know.

#include <cstdio>

namespace bsp {

/** The function and line that a message names. As a default argument it is the caller's. */
struct CallSite {
    const char *function;
    int line;

    static constexpr CallSite here(const char *function = __builtin_FUNCTION(),
                                   int line = __builtin_LINE()) {
        return {function, line};
    }
};

// Texts bring their own line ends: log filters know these as they are.

/** "function-line: text", the style of the board core. */
[[gnu::format(printf, 2, 3)]] void report(CallSite site, const char *format, ...);

/** "ERROR: function(line): text", the style of the transfer layers. */
[[gnu::format(printf, 2, 3)]] void reportError(CallSite site, const char *format, ...);

/** "function-line" alone, where there is nothing more to say. */
inline void reportPlace(CallSite site) {
    std::printf("%s-%d \r\n", site.function, site.line);
}

} // namespace bsp
