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

/** "function-line: text", the style of the board core. */
inline void report(const char *text, CallSite site) {
    std::printf("%s-%d: %s\n", site.function, site.line, text);
}

/** "ERROR: function(line): text", the style of the transfer layers. */
inline void reportError(const char *text, CallSite site) {
    std::printf("ERROR: %s(%d): %s\n", site.function, site.line, text);
}

} // namespace bsp
