#pragma once
// What two captured units differ in, by the table of what they hold.

#include "language/captured_unit.h"

#include <optional>
#include <string>
#include <vector>

namespace language {

/** A property that is not the same, in words; nothing where a unit does not have it. */
struct CapturedDifference {
    std::string name;
    const char *group; // "Fans and temperature"
    std::optional<std::string> first, second;
};

/** How much of what differs is told. */
enum class CaptureDetail {
    Usual, // measured values beyond their tolerance, no clocks, nothing twice
    All,
};

/**
 * What differs, in the order of documents. What one of them was not asked to have is left out: with
 * secrets in one alone, those are no difference.
 */
std::vector<CapturedDifference> differencesOf(const CapturedUnit &first, const CapturedUnit &second,
                                              CaptureDetail detail);

} // namespace language
