#pragma once
// A scenario: what is done to a board and expected of it, step by step. Plain data.

#include "virtual_board/command/commands.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace vboard {

using Strings = std::vector<std::string>;

/** A place in a scenario's file; lines and columns count from 1. */
struct Place {
    uint32_t line = 0;
    uint32_t column = 0;

    bool operator<(const Place &other) const {
        return std::tie(line, column) < std::tie(other.line, other.column);
    }
};

/** A text of the file. */
struct PlacedText {
    std::string text;
    Place place;
};

struct PlacedChange {
    std::string name, value;
    Place place; // of the name
};

enum class Deed { Wait, Set, AddFault, ClearFaults, Advance, Run, Stop, Expect };

/** The usual time for a condition that a step waits for, and for a program, which is the host's. */
constexpr uint64_t kUsualPatienceNs = 60000000000;
constexpr uint64_t kUsualLimitNs = 600000000000;

/** What `clear` removes every rule by. */
constexpr char kAllFaults[] = "all";

struct Step {
    Deed deed = Deed::Wait;
    Place place; // of the word that says what it does
    std::string title;

    // When it is done; at once without any of these.
    std::optional<uint64_t> atNs; // since the play began
    std::optional<uint64_t> afterNs;
    std::optional<PlacedText> when;
    std::optional<uint64_t> withinNs; // how long what it waits for, or expects, may take

    // What it does.
    std::vector<PlacedChange> changes;
    FaultWords fault;
    std::optional<PlacedText> label;   // name of a fault or of a program, for later steps
    std::optional<PlacedText> subject; // the name that it is about
    uint64_t advanceNs = 0;
    std::vector<std::string> program;
    bool isInBackground = false;
    int32_t exitCode = 0;
    uint64_t limitNs = kUsualLimitNs;
    std::optional<PlacedText> expected; // of the board, or of what a program prints
};

struct Scenario {
    std::string file; // as messages name it
    std::string title;
    std::vector<Step> steps;
};

/** What a step does, in words: "set fan.1.state = stuck". */
std::string deedText(const Step &step);
/** When it does that: "when poe.3.state == delivering, within 10 s"; empty: at once. */
std::string momentText(const Step &step);

/** The two in short: what it does, or when it is done that does nothing else. */
std::string stepText(const Step &step);

/** The word for a deed: "set"; "wait" for none. */
const char *wordOf(Deed deed);

/** "start-up.toml:12" */
std::string placeText(const Scenario &scenario, const Step &step);

} // namespace vboard
