#include "support/message.h"

#include <cstdarg>
#include <cstdio>

namespace {

enum class Style { BoardCore, Transfers };

/**
 * Prints prefix and text in one call, so that a message stays whole whatever other threads print:
 * the format gets a prefix, in which nothing is left to convert.
 */
[[gnu::noinline]] void print(Style style, bsp::CallSite site, const char *format,
                             va_list arguments) {
    char whole[256]; // twice what the longest of the library's messages takes
    std::snprintf(whole, sizeof(whole),
                  style == Style::BoardCore ? "%s-%d: %s" : "ERROR: %s(%d): %s", site.function,
                  site.line, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // checked where the text is
    std::vprintf(whole, arguments);
#pragma GCC diagnostic pop
}

} // namespace

void bsp::report(CallSite site, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print(Style::BoardCore, site, format, arguments);
    va_end(arguments);
}

void bsp::reportError(CallSite site, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print(Style::Transfers, site, format, arguments);
    va_end(arguments);
}
