// iodbg diff: what two units differ in, each a file or the one that iodbg runs on.

#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/unit/capture.h"
#include "iodbg/unit/commands.h"
#include "language/captured_difference.h"
#include "language/captured_unit_privacy.h"

namespace iodbg {

using language::CapturedDifference;
using language::CapturedUnit;

namespace {

constexpr char kLive[] = "live"; // in the place of a file: this unit
constexpr char kAbsent[] = "-";

struct DiffArguments {
    std::string first, second;
    bool isAll = false;
};

CapturedUnit readUnit(const std::string &file) {
    constexpr size_t kLargest = size_t{256} * 1024 * 1024;
    const Bytes document = readHostFileOrInput(file, kLargest);
    try {
        return language::readCapture(std::string(document.begin(), document.end()));
    } catch (const language::Refused &refusal) {
        throw Failure(ExitCode::Host, inputName(file) + ": " + refusal.what());
    }
}

/** This unit, captured as the other one was. */
CapturedUnit liveUnit(Console &console, const CapturedUnit *other) {
    requireBoard();
    const bool hasSecrets = other != nullptr && other->capture.hasSecrets;
    return captureUnit(console, {.hasSecrets = hasSecrets, .hasFlash = false});
}

struct TwoUnits {
    CapturedUnit first, second;
};

TwoUnits takeUnits(Console &console, const DiffArguments &arguments) {
    const bool isFirstLive = arguments.first == kLive;
    const bool isSecondLive = arguments.second == kLive;
    TwoUnits units;
    if (!isFirstLive)
        units.first = readUnit(arguments.first);
    if (!isSecondLive)
        units.second = readUnit(arguments.second);
    if (isFirstLive)
        units.first = liveUnit(console, isSecondLive ? nullptr : &units.second);
    if (isSecondLive)
        units.second = liveUnit(console, &units.first);
    if (units.first.capture.isAnonymous != units.second.capture.isAnonymous)
        language::makeAnonymous(units.first.capture.isAnonymous ? units.second : units.first);
    return units;
}

std::string unitText(const std::string &word, const CapturedUnit &unit) {
    return (word == kLive ? "this unit" : inputName(word)) + ", captured " +
           printable(unit.capture.began) + (unit.capture.isAnonymous ? ", anonymous" : "");
}

Cell sideCell(const std::optional<std::string> &words) {
    return words ? textCell(printable(*words)) : Cell{kAbsent, nullptr};
}

/** For programs. */
Table differencesTable(const std::vector<CapturedDifference> &differences) {
    Table table = {
        "differences",
        {{"property", "PROPERTY"}, {"group", "GROUP"}, {"first", "FIRST"}, {"second", "SECOND"}},
        {}};
    for (const CapturedDifference &difference : differences)
        table.rows.push_back({textCell(printable(difference.name)), textCell(difference.group),
                              sideCell(difference.first), sideCell(difference.second)});
    return table;
}

/** What differs, a table for each group. */
std::string groupsText(const std::vector<CapturedDifference> &differences) {
    std::string text;
    for (auto next = differences.begin(); next != differences.end();) {
        const std::string group = next->group;
        Table table = {
            "", {{"property", "PROPERTY"}, {"first", "FIRST"}, {"second", "SECOND"}}, {}};
        for (; next != differences.end() && next->group == group; ++next)
            table.rows.push_back(
                {textCell(printable(next->name)), sideCell(next->first), sideCell(next->second)});
        text += "\n" + group + "\n" + Report{{table}, {}}.toText();
    }
    return text;
}

ExitCode diff(Console &console, const DiffArguments &arguments) {
    if (isStandardStream(arguments.first) && isStandardStream(arguments.second))
        throw Failure::usage("standard input has one document; give a file for the other");
    const TwoUnits units = takeUnits(console, arguments);
    const auto detail =
        arguments.isAll ? language::CaptureDetail::All : language::CaptureDetail::Usual;
    const auto differences = language::differencesOf(units.first, units.second, detail);
    Section section = {"", "", {}};
    section.add("first", "First", textCell(unitText(arguments.first, units.first)));
    section.add("second", "Second", textCell(unitText(arguments.second, units.second)));
    section.add("different", "Properties that differ",
                numberCell(static_cast<int64_t>(differences.size())));
    console.print({{section, differencesTable(differences)}, {}},
                  Report{{section}, {}}.toText() + groupsText(differences));
    return differences.empty() ? ExitCode::Ok : ExitCode::Different;
}

} // namespace

void addDiffCommand(Command &root) {
    const auto arguments = std::make_shared<DiffArguments>();
    Command &command = root.command(
        "diff", "Compare two captured units, or one with this unit.\nExit code 6 when they differ");
    command.argument("FIRST", "The file of a captured unit, - is standard input; 'live': this unit",
                     fileName(arguments->first));
    command.argument("SECOND", "The same of another", fileName(arguments->second));
    command.flag("--all", "Also clocks, raw bytes, and every difference of what is measured",
                 arguments->isAll);
    command.detail("Values that are measured differ when they are further apart than usual.")
        .example("iodbg diff unit.json live")
        .example("iodbg diff live unit.json --json");
    command.does([arguments](Console &console) { return diff(console, *arguments); });
}

} // namespace iodbg
