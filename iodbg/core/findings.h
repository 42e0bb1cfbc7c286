#pragma once
// What was found when the unit was looked at.

#include "iodbg/core/finding_codes.h"
#include "iodbg/core/report.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace iodbg {

/** One of them, or all that there are when they have numbers. */
struct Subject {
    Unit unit;
    std::optional<uint32_t> index = {};

    bool operator==(const Subject &) const = default;
    /** "fan 2" */
    std::string name() const;
    /** "fan" */
    const char *key() const;
};

struct Finding {
    Subject subject;
    Code code;
    std::string text;                  // what was found
    std::string advice = {};           // what to do, if it is not what the code recommends
    std::optional<Subject> cause = {}; // of what is not judged: what it hangs on

    Severity severity() const;
    /** What to do; empty when there is nothing to do. */
    std::string toDo() const;
};
using Findings = std::vector<Finding>;

/** Something that is as it should be. */
Finding good(const Subject &subject, const std::string &text);
/** Something that the library could not tell. */
Finding unreadable(const Subject &subject, int32_t status);
/** A device that does not answer on its bus. */
Finding silent(const Subject &subject, int32_t status);
/** Something that hangs on something else. */
Finding notJudged(const Subject &subject, const Subject &cause);

int64_t countOf(const Findings &findings, Severity severity);

/** A row for each, for programs. */
Table findingsTable(const Findings &findings);

/** A line for people. */
struct FindingLine {
    std::string text;
    Severity severity;
};

/** The same for people, in so many columns: what to do stands below what was found. */
std::vector<FindingLine> findingLines(const Findings &findings, size_t columns);

} // namespace iodbg
