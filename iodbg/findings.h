#pragma once
// What was found when the unit was looked at.

#include "iodbg/report.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

enum class Severity {
    Good,
    Warning, // works, but somebody should look at it
    Fault,   // does not do what it is for
};

struct Finding {
    std::string subject; // "fan 2"
    Severity severity;
    std::string text;   // what was found
    std::string advice; // what to do; empty when there is nothing to do
};
using Findings = std::vector<Finding>;

/** Something that is as it should be. */
Finding good(const std::string &subject, const std::string &text);

/** Something that the library could not tell. */
Finding unreadable(const std::string &subject, int32_t status);

int64_t countOf(const Findings &findings, Severity severity);

/** A row for each. */
Table findingsTable(const Findings &findings);

} // namespace iodbg
