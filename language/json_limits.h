#pragma once
// JSON texts from elsewhere, before they are taken into memory.

#include <cstddef>
#include <string>

namespace language {

/** How much one may hold. */
struct JsonLimits {
    size_t levels; // of objects and lists in one another
    size_t keys;   // of an object
    size_t values; // of the whole text
};

/**
 * Throws Refused for a text that holds more, and for one with a key twice in an object. What is
 * wrong with its syntax is for the parser to tell.
 */
void requireWithin(const JsonLimits &limits, const std::string &text);

} // namespace language
