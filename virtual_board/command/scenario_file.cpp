#include "virtual_board/command/scenario_file.h"

#include "command_line/closest_word.h"
#include "language/conditions.h"
#include "language/property_values.h"
#include "language/texts.h"
#include "virtual_board/command/complaints.h"
#include "virtual_board/command/name_depth.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>

namespace vboard {

namespace {

/** The parser of TOML takes some wrong files for mistakes of its own. */
struct Stumbled {};

[[noreturn]] void stumble() {
    throw Stumbled();
}

} // namespace

} // namespace vboard

// In every build, since it otherwise builds upon what it has asserted.
#undef NDEBUG
#define TOML_MAX_NESTED_VALUES 16
#define TOML_ASSERT(condition) ((condition) ? void() : vboard::stumble())
#include <toml++/toml.h>

namespace vboard {

namespace {

using language::quoted;
using language::Refused;
using Strings = std::vector<std::string>;

Place placeOf(const toml::source_position &position) {
    return {position.line, position.column};
}

template <typename Sourced>
Place placeOf(const Sourced &item) {
    return placeOf(item.source().begin);
}

bool isBefore(const Place &a, const Place &b) {
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
}

// Values as steps have them; others are refused.

std::string nodeText(const toml::node &node) {
    const std::string *text = node.is_string() ? &node.as_string()->get() : nullptr;
    if (text == nullptr || text->empty() || text->find('\0') != std::string::npos)
        throw Refused("give a text");
    return *text;
}

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
        return {"sh", "-c", nodeText(node)};
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
    return {nodeText(node), placeOf(node)};
}

PlacedText conditionOf(const toml::node &node) {
    language::parseCondition(nodeText(node));
    return placedText(node);
}

/** "'atfer' is not known here (did you mean 'after'?)" */
std::string unknown(const std::string &word, const Strings &known) {
    const std::string close = command_line::closestWord(word, known);
    return quoted(word) + " is not known here; there are " + language::listed(known, "and") +
           (close.empty() ? "" : " (did you mean '" + close + "'?)");
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
    std::sort(
        step.changes.begin(), step.changes.end(),
        [](const PlacedChange &a, const PlacedChange &b) { return isBefore(a.place, b.place); });
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
            complaints.add(placeOf(key), unknown(name, namesOf(kFaultKeys)));
        else
            complaints.about(placeOf(word), [&, &value = word] {
                step.fault.*(row->word) = language::about(name, [&] { return wordOf(value); });
            });
    }
    if (step.fault.device.empty() || step.fault.effect.empty())
        throw Refused("give a device and an effect");
}

/** What may stand in a step. */
struct StepKey {
    const char *name;
    const char *example;
    const char *only; // with one of these; empty: with anything
    bool isDeed;
    void (*take)(Step &step, const toml::node &node, Complaints &complaints);
};

constexpr StepKey kStepKeys[] = {
    {"title", "title = \"the fan fails\"", "", false,
     [](Step &step, const toml::node &node, Complaints &) { step.title = nodeText(node); }},
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

struct NotTogether {
    const char *first, *second, *reason;
    const char *where = ""; // this is there, too
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

/** Reads one step behind the other. */
class StepReader {
  public:
    explicit StepReader(Complaints &complaints) : complaints_(complaints) {}

    Step read(const toml::table &table) {
        Step step;
        keys_.clear();
        hasUnknown_ = false;
        for (const auto &[key, node] : table)
            take(step, key, node);
        // In the order of the file.
        std::sort(keys_.begin(), keys_.end(),
                  [](const Found &a, const Found &b) { return isBefore(a.place, b.place); });
        judgeCompany();
        findDeed(step, placeOf(table));
        judgeMoment(step);
        judgeNames(step);
        return step;
    }

  private:
    struct Found {
        const StepKey *key;
        Place place;
    };

    void take(Step &step, const toml::key &key, const toml::node &node) {
        const StepKey *row = rowOf(kStepKeys, key.str());
        if (row == nullptr) {
            complaints_.add(placeOf(key), unknown(std::string(key.str()), namesOf(kStepKeys)));
            hasUnknown_ = true;
            return;
        }
        keys_.push_back({row, placeOf(key)});
        try {
            row->take(step, node, complaints_);
        } catch (const Refused &refusal) {
            complaints_.add(placeOf(key), std::string(row->name) + ": " + refusal.what() +
                                              ", as in " + row->example);
        }
    }

    const Found *found(std::string_view name) const {
        const auto place = std::find_if(keys_.begin(), keys_.end(),
                                        [name](const Found &one) { return one.key->name == name; });
        return place != keys_.end() ? &*place : nullptr;
    }

    /** Looks at which keys stand together. */
    void judgeCompany() {
        for (const Found &one : keys_) {
            const Strings only = language::wordsOf(one.key->only);
            const bool isAlone = std::none_of(only.begin(), only.end(), [this](const auto &other) {
                return found(other) != nullptr;
            });
            if (*one.key->only != '\0' && isAlone)
                complaints_.add(one.place, quoted(one.key->name) + " goes with " +
                                               language::listed(inQuotes(only), "or"));
        }
        for (const NotTogether &pair : kNotTogether) {
            const Found *first = found(pair.first);
            const Found *second = found(pair.second);
            const bool isThere = *pair.where == '\0' || found(pair.where) != nullptr;
            if (first != nullptr && second != nullptr && isThere)
                complaints_.add(std::max(first->place, second->place, isBefore),
                                quoted(pair.first) + " and " + quoted(pair.second) +
                                    " do not go together: " + pair.reason);
        }
    }

    static Strings inQuotes(Strings words) {
        for (std::string &word : words)
            word = quoted(word);
        return words;
    }

    /** Finds what the step does: one thing, but for a program and what it is to print. */
    void findDeed(Step &step, const Place &start) {
        std::vector<Found> deeds;
        std::copy_if(keys_.begin(), keys_.end(), std::back_inserter(deeds),
                     [](const Found &one) { return one.key->isDeed; });
        const Found *run = found("run");
        if (run != nullptr)
            std::erase_if(deeds, [](const Found &one) {
                return std::string_view(one.key->name) == "expect";
            });
        for (size_t i = 1; i < deeds.size(); ++i)
            complaints_.add(deeds[i].place, quoted(deeds[i].key->name) +
                                                " is one thing too many: a step does one, this one "
                                                "does '" +
                                                deeds[0].key->name +
                                                "'; begin another with [[step]]");
        if (!deeds.empty()) {
            step.deed = deedOf(deeds[0].key->name);
            step.place = deeds[0].place;
            return;
        }
        const auto waits = std::find_if(keys_.begin(), keys_.end(), [](const Found &one) {
            const std::string_view name = one.key->name;
            return name == "at" || name == "after" || name == "when";
        });
        step.place = waits != keys_.end() ? waits->place : start;
        if (waits == keys_.end() && !hasUnknown_)
            complaints_.add(start, "this step does nothing: give it 'set', 'fault', 'clear', "
                                   "'advance', 'run', 'stop' or 'expect'");
    }

    static Deed deedOf(std::string_view word) {
        for (const Deed deed :
             {Deed::Set, Deed::AddFault, Deed::ClearFaults, Deed::Advance, Deed::Run, Deed::Stop}) {
            if (word == vboard::wordOf(deed))
                return deed;
        }
        return Deed::Expect;
    }

    /** Steps are done in their order, whatever their times are. */
    void judgeMoment(const Step &step) {
        if (!step.atNs.has_value())
            return;
        if (*step.atNs < lastAtNs_)
            complaints_.add(found("at")->place,
                            "an earlier step is done later: steps are done in their order");
        lastAtNs_ = std::max(lastAtNs_, *step.atNs);
    }

    /** Looks at the names that steps give faults and programs, and call them by. */
    void judgeNames(const Step &step) {
        if (step.label.has_value())
            judgeNewName(step);
        if (!step.subject.has_value())
            return;
        const std::string &name = step.subject->text;
        if (step.deed == Deed::ClearFaults && name == kAllFaults) {
            std::erase_if(inForce_, [](const auto &one) { return one.second == Deed::AddFault; });
            return;
        }
        const bool isFault = step.deed == Deed::ClearFaults;
        const auto place = inForce_.find(name);
        if (place == inForce_.end() || (place->second == Deed::AddFault) != isFault)
            complaints_.add(step.subject->place,
                            isFault ? "no fault is called " + quoted(name) +
                                          " here; an earlier step gives one its name with 'as'"
                                    : "no program in the background is called " + quoted(name) +
                                          " here; an earlier step gives one its name with 'as'");
        else if (step.deed != Deed::Expect)
            inForce_.erase(place);
    }

    void judgeNewName(const Step &step) {
        const std::string &name = step.label->text;
        if (name == kAllFaults)
            complaints_.add(step.label->place, "'all' stands for all faults; take another name");
        else if (!names_.insert(name).second)
            complaints_.add(step.label->place, quoted(name) + " is the name of another already");
        else
            inForce_.emplace(name, step.deed);
    }

    Complaints &complaints_;
    std::vector<Found> keys_; // of the step
    bool hasUnknown_ = false; // a key of it, which may be what it was to do
    uint64_t lastAtNs_ = 0;
    std::set<std::string> names_;
    std::map<std::string, Deed> inForce_; // those that are not cleared or stopped
};

constexpr char kNoSteps[] = "there are no steps; each begins with a line [[step]]";

void readSteps(Scenario &scenario, const toml::node &node, Complaints &complaints) {
    const toml::array *array = node.as_array();
    if (array == nullptr || !array->is_homogeneous<toml::table>()) {
        complaints.add(placeOf(node), kNoSteps);
        return;
    }
    StepReader reader(complaints);
    for (const toml::node &step : *array)
        scenario.steps.push_back(reader.read(*step.as_table()));
}

void readAll(Scenario &scenario, const toml::table &table, Complaints &complaints) {
    constexpr char kTitle[] = "title";
    constexpr char kStep[] = "step";
    for (const auto &[key, node] : table) {
        if (key == kTitle)
            complaints.about(placeOf(key), [&, &value = node] {
                scenario.title = language::about(kTitle, [&] { return nodeText(value); });
            });
        else if (key == kStep)
            readSteps(scenario, node, complaints);
        else
            complaints.add(placeOf(key), unknown(std::string(key.str()), {kTitle, kStep}) +
                                             ": what is done is in steps, each behind a line "
                                             "[[step]]");
    }
    if (!table.contains(kStep))
        complaints.add({1, 1}, kNoSteps);
}

/** The line that the parser stumbles over. */
Place stumblingBlock(const std::string &content) {
    Place place = {1, 1};
    for (size_t end = 0; (end = content.find('\n', end)) != std::string::npos; ++place.line) {
        try {
            static_cast<void>(toml::parse(std::string_view(content).substr(0, ++end)));
        } catch (const toml::parse_error &) { // what is open here ends further below
        } catch (const Stumbled &) {
            break;
        }
    }
    return place;
}

/** Everything that a stream has; nothing when it cannot be read. */
std::optional<std::string> contentOf(FILE *stream) {
    constexpr size_t kPiece = 4096;
    std::string content;
    char piece[kPiece];
    for (size_t count = sizeof(piece); count > 0;) {
        count = std::fread(piece, 1, sizeof(piece), stream);
        content.append(piece, count);
    }
    return std::ferror(stream) == 0 ? std::optional(content) : std::nullopt;
}

struct CloseStream {
    void operator()(FILE *stream) const { std::fclose(stream); }
};

} // namespace

Scenario parseScenario(const std::string &file, const std::string &content) {
    Scenario scenario;
    scenario.file = file;
    Complaints complaints;
    if (const std::optional<Place> place = tooDeepName(content)) {
        complaints.add(*place, "a name has too many parts");
        complaints.refuse(file);
    }
    try {
        readAll(scenario, toml::parse(content), complaints);
    } catch (const toml::parse_error &mistake) {
        complaints.add(placeOf(mistake.source().begin), std::string(mistake.description()));
    } catch (const Stumbled &) {
        complaints.add(stumblingBlock(content), "this is no TOML; a step begins with [[step]]");
    }
    complaints.refuse(file);
    return scenario;
}

Scenario readScenario(const std::string &file) {
    const bool isInput = file == "-";
    const std::unique_ptr<FILE, CloseStream> opened(isInput ? nullptr
                                                            : std::fopen(file.c_str(), "rbe"));
    FILE *stream = isInput ? stdin : opened.get();
    const std::optional<std::string> content = stream != nullptr ? contentOf(stream) : std::nullopt;
    if (!content.has_value())
        throw Refused("cannot read " + file + ": " + std::strerror(errno));
    return parseScenario(file, *content);
}

} // namespace vboard
