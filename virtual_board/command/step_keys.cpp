#include "virtual_board/command/step_keys.h"

#include "command_line/closest_word.h"
#include "language/conditions.h"
#include "language/property_values.h"
#include "language/texts.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vboard {

using language::Refused;

std::string textOf(const toml::node &node) {
    const std::string *text = node.is_string() ? &node.as_string()->get() : nullptr;
    if (text == nullptr || text->empty() || text->find('\0') != std::string::npos)
        throw Refused("give a text");
    return *text;
}

std::string unknownKey(const std::string &word, const std::vector<std::string> &known) {
    const std::string close = command_line::closestWord(word, known);
    return language::quoted(word) + " is not known here; there are " +
           language::listed(known, "and") +
           (close.empty() ? "" : " (did you mean '" + close + "'?)");
}

namespace {

// Values as steps have them; others are refused.

/** A value of a property, or a word of a fault rule: numbers can do without quotes. */
std::string wordOf(const toml::node &node) {
    if (node.is_integer())
        return std::to_string(node.as_integer()->get());
    if (!node.is_string() || node.as_string()->get().find('\0') != std::string::npos)
        throw Refused("give a text between quotes, or a whole number");
    return node.as_string()->get();
}

uint64_t secondsOf(const toml::node &node) {
    constexpr double kMost = 1e9;
    constexpr double kNsPerSecond = 1e9;
    const double seconds = node.is_number() ? node.value_or(-1.0) : -1.0;
    if (!(seconds >= 0 && seconds <= kMost))
        throw Refused("give a number of seconds from 0 to 1000000000");
    return static_cast<uint64_t>(std::llround(seconds * kNsPerSecond));
}

bool switchOf(const toml::node &node) {
    if (!node.is_boolean())
        throw Refused("give true or false");
    return node.as_boolean()->get();
}

int32_t exitCodeOf(const toml::node &node) {
    constexpr int64_t kMost = 255;
    const int64_t code = node.is_integer() ? node.as_integer()->get() : -1;
    if (code < 0 || code > kMost)
        throw Refused("give a number from 0 to 255");
    return static_cast<int32_t>(code);
}

/** A command line of the shell's, or a program with its words. */
Strings programOf(const toml::node &node) {
    if (node.is_string())
        return {"sh", "-c", textOf(node)};
    Strings words;
    if (const toml::array *array = node.as_array()) {
        for (const toml::node &word : *array)
            words.push_back(wordOf(word));
    }
    if (words.empty() || words[0].empty())
        throw Refused("give a command line for the shell, or an array of a program's words");
    return words;
}

PlacedText placedText(const toml::node &node) {
    return {textOf(node), placeOf(node)};
}

PlacedText conditionOf(const toml::node &node) {
    language::parseCondition(textOf(node));
    return placedText(node);
}

/** Takes the properties of a table: "fan.1.state" is a key between quotes, or tables in tables. */
void takeChanges(Step &step, const toml::table &table, const std::string &prefix,
                 Complaints &complaints) {
    for (const auto &[key, node] : table) {
        const std::string name = prefix + std::string(key.str());
        if (const toml::table *inner = node.as_table())
            takeChanges(step, *inner, name + ".", complaints);
        else
            complaints.about(placeOf(key), [&, &leaf = key, &value = node] {
                step.changes.push_back(
                    {name, language::about(name, [&] { return wordOf(value); }), placeOf(leaf)});
            });
    }
}

void takeSet(Step &step, const toml::node &node, Complaints &complaints) {
    const toml::table *table = node.as_table();
    if (table == nullptr || table->empty())
        throw Refused("give properties and their values");
    takeChanges(step, *table, "", complaints);
    // Tables have their keys in the order of the alphabet, but a module is plugged before its link.
    std::sort(step.changes.begin(), step.changes.end(),
              [](const PlacedChange &a, const PlacedChange &b) { return a.place < b.place; });
}

struct FaultKey {
    const char *name;
    std::string FaultWords::*word;
};

constexpr FaultKey kFaultKeys[] = {
    {"device", &FaultWords::device}, {"op", &FaultWords::op},     {"offset", &FaultWords::offset},
    {"nth", &FaultWords::nth},       {"when", &FaultWords::when}, {"effect", &FaultWords::effect},
};

template <typename Rows>
Strings namesOf(const Rows &rows) {
    Strings names;
    for (const auto &row : rows)
        names.emplace_back(row.name);
    return names;
}

/** The row of a name; null when there is none. */
template <typename Rows>
auto rowOf(const Rows &rows, std::string_view name) {
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [name](const auto &one) { return one.name == name; });
    return row != std::end(rows) ? &*row : nullptr;
}

void takeFault(Step &step, const toml::node &node, Complaints &complaints) {
    const toml::table *table = node.as_table();
    if (table == nullptr)
        throw Refused("give the words of a rule");
    for (const auto &[key, word] : *table) {
        const std::string name(key.str());
        const FaultKey *row = rowOf(kFaultKeys, name);
        if (row == nullptr)
            complaints.add(placeOf(key), unknownKey(name, namesOf(kFaultKeys)));
        else
            complaints.about(placeOf(word), [&, &value = word] {
                step.fault.*(row->word) = language::about(name, [&] { return wordOf(value); });
            });
    }
    if (step.fault.device.empty() || step.fault.effect.empty())
        throw Refused("give a device and an effect");
}

constexpr StepKey kStepKeys[] = {
    {"title", "title = \"the fan fails\"", "", false,
     [](Step &step, const toml::node &node, Complaints &) { step.title = textOf(node); }},
    {"at", "at = 60", "", false,
     [](Step &step, const toml::node &node, Complaints &) { step.atNs = secondsOf(node); }},
    {"after", "after = 2.5", "", false,
     [](Step &step, const toml::node &node, Complaints &) { step.afterNs = secondsOf(node); }},
    {"when", "when = \"fan.1.speed == 0\"", "", false,
     [](Step &step, const toml::node &node, Complaints &) { step.when = conditionOf(node); }},
    {"within", "within = 10", "when|expect", false,
     [](Step &step, const toml::node &node, Complaints &) { step.withinNs = secondsOf(node); }},
    {"set", "set.fan.1.state = \"stuck\"", "", true, takeSet},
    {"fault", R"(fault = { device = "i2c:0.1.0x4F", effect = "no-answer" })", "", true, takeFault},
    {"clear", "clear = \"all\", or the name of a fault", "", true,
     [](Step &step, const toml::node &node, Complaints &) { step.subject = placedText(node); }},
    {"advance", "advance = 60", "", true,
     [](Step &step, const toml::node &node, Complaints &) { step.advanceNs = secondsOf(node); }},
    {"run", R"(run = "iodbg check", or run = ["iodbg", "check"])", "", true,
     [](Step &step, const toml::node &node, Complaints &) { step.program = programOf(node); }},
    {"exit", "exit = 5", "run", false,
     [](Step &step, const toml::node &node, Complaints &) { step.exitCode = exitCodeOf(node); }},
    {"background", "background = true", "run", false,
     [](Step &step, const toml::node &node, Complaints &) {
         step.isInBackground = switchOf(node);
     }},
    {"limit", "limit = 600", "run", false,
     [](Step &step, const toml::node &node, Complaints &) { step.limitNs = secondsOf(node); }},
    {"as", "as = \"monitor\"", "fault|background", false,
     [](Step &step, const toml::node &node, Complaints &) { step.label = placedText(node); }},
    {"stop", "stop = \"monitor\"", "", true,
     [](Step &step, const toml::node &node, Complaints &) { step.subject = placedText(node); }},
    {"expect", "expect = \"fan.1.speed == 0\"", "", true,
     [](Step &step, const toml::node &node, Complaints &) { step.expected = conditionOf(node); }},
    {"from", "from = \"monitor\"", "expect", false,
     [](Step &step, const toml::node &node, Complaints &) { step.subject = placedText(node); }},
};

constexpr NotTogether kNotTogether[] = {
    {"at", "after", "a step waits in one way"},
    {"at", "when", "a step waits in one way"},
    {"after", "when", "a step waits in one way"},
    {"when", "expect", "make two steps, each with its own 'within'", "within"},
    {"run", "from", "what a program prints is expected where it is run, without 'from'"},
    {"background", "expect", "what such a program prints is expected in a later step, with 'from'"},
    {"background", "limit", "such a program is ended when the play ends"},
};

} // namespace

const StepKey *stepKey(std::string_view name) {
    return rowOf(kStepKeys, name);
}

std::span<const NotTogether> notTogether() {
    return kNotTogether;
}

std::string unknownStepKey(const std::string &word) {
    return unknownKey(word, namesOf(kStepKeys));
}

} // namespace vboard
