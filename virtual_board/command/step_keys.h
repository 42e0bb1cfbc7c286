#pragma once
// What may stand in a step of a scenario's file.

#include "virtual_board/command/complaints.h"
#include "virtual_board/command/scenario.h"
#include "virtual_board/command/toml_parser.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vboard {

/** A key, and what is made of its value. */
struct StepKey {
    const char *name;
    const char *example;
    const char *only; // with one of these; empty: with anything
    bool isDeed;
    void (*take)(Step &step, const toml::node &node, Complaints &complaints);
};

/** The one of a name; null when there is none. */
const StepKey *stepKey(std::string_view name);

/** Two keys of which a step has one at most. */
struct NotTogether {
    const char *first, *second, *reason;
    const char *where = ""; // this is there, too
};

std::span<const NotTogether> notTogether();

/** A text that is not empty; anything else is refused. */
std::string textOf(const toml::node &node);

/** "'atfer' is not known here (did you mean 'after'?)" */
std::string unknownKey(const std::string &word, const std::vector<std::string> &known);
std::string unknownStepKey(const std::string &word);

} // namespace vboard
