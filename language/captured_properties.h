#pragma once
// What a captured unit holds: the properties that can be read of a unit without changing it. A name
// that boards have too (property_table.h) means the same here.

#include "language/properties.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace language {

/** How two units are compared in a property. */
enum class Compared {
    State,    // what differs is a difference
    Measured, // what differs by more than the tolerance
    Clock,    // tells the time: never the same twice
    Counter,  // counts: never the same twice
    Raw,      // bytes of which other properties tell the meaning
    Secret,   // as state; captured only when it is asked for
};

struct CapturedProperty {
    const char *name = ""; // '#' stands for a number
    Subject subject = Subject::Board;
    Type type = Type::Number;
    const char *sentence = "";
    const char *unit = "";
    const char *words = ""; // "no|yes": all that it can hold
    Compared compared = Compared::State;
    int64_t tolerance = 0; // of what is measured: a difference up to this is none,
    int64_t percent = 0;   // nor one up to so many hundredths of the larger value
    const char *raw = "";  // what its raw bytes are; empty: it has none
    // Bytes of a page that are measured, and compared by what they tell.
    uint32_t liveFrom = 0, liveBehind = 0;
    // Numbers that the row is for, where those of a name differ.
    uint32_t firstNumber = 0, lastNumber = UINT32_MAX;
    bool isCommon = false; // boards have it, too
};

/** The whole table, in the order in which documents have them. */
std::span<const CapturedProperty> capturedProperties();

/** What a name is in the table. */
struct CapturedName {
    const CapturedProperty *row;
    std::vector<uint32_t> numbers;
};

/** The row of a name, and the numbers in it; nothing for a name that captures do not have. */
std::optional<CapturedName> capturedName(const std::string &name);

/** A row's name with its numbers: "fan.1.speed". */
std::string capturedName(const CapturedProperty &row, std::span<const uint32_t> numbers);

/**
 * Where a name stands in a document: the row, its numbers; names of no row behind all others. The
 * numbers are signed: some C++ libraries compare only a part of rows of unsigned ones on big-endian
 * machines.
 */
using CapturedPlace = std::tuple<size_t, std::vector<int64_t>, std::string>;
CapturedPlace capturedPlace(const std::string &name);

/** "state", "measured": the word for programs and people. */
const char *comparedWord(Compared compared);

} // namespace language
