#pragma once
// Conditions over properties, as people write them: "fan.1.speed == 0 and supply.2.input == good".

#include "language/property_values.h"

#include <string>
#include <vector>

namespace language {

enum class Relation { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

/** "fan.1.speed == 0" */
struct Comparison {
    std::string name;
    Relation relation;
    std::string value;

    bool operator==(const Comparison &other) const = default;
};

/** Comparisons that hold together. */
using Conjunction = std::vector<Comparison>;

/** Of which one at least has to hold. */
using Condition = std::vector<Conjunction>;

/** A condition from its words; others throw Refused. */
Condition parseCondition(const std::string &text);

/**
 * What a property is compared with, as its type has it: also what it can hold and not be set to.
 * Refused is thrown for what it never holds, and for an order of what has none.
 */
Value comparedValue(const Property &property, const Comparison &comparison);

/** Whether what a property holds is so in relation to another value of its type. */
bool holds(const Property &property, const Value &found, Relation relation, const Value &value);

} // namespace language
