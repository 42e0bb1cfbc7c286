// iodbg watch: the unit as it changes.

#include "command_line/page.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/interrupt.h"
#include "iodbg/core/screen.h"
#include "iodbg/poe/tour.h"
#include "iodbg/unit/changes.h"
#include "iodbg/unit/commands.h"
#include "iodbg/unit/watch_parts.h"
#include "iodbg/unit/watch_round.h"
#include "language/texts.h"

#include <optional>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr uint32_t kMsPerSecond = 1000;
constexpr uint32_t kShortestMs = 100;
constexpr uint32_t kLongestMs = 3600 * kMsPerSecond;

struct Watching {
    uint32_t intervalMs = 2 * kMsPerSecond;
    std::optional<uint32_t> count; // without it: until stopped
    WatchedParts parts;
    bool isOfChanges = false;
};

std::string headline(const Round &round) {
    const int64_t faults = countOf(round.findings, Severity::Fault);
    const int64_t warnings = countOf(round.findings, Severity::Warning);
    return round.time + "  " + std::to_string(faults) + (faults == 1 ? " fault, " : " faults, ") +
           std::to_string(warnings) + (warnings == 1 ? " warning" : " warnings");
}

/** The answer of a round, for programs with its time. */
Report answerOf(const Round &round) {
    Report answer = round.report;
    Section summary = {"", "", {}};
    summary.add("time", "Time", textCell(round.time));
    answer.parts.insert(answer.parts.begin(), {summary, findingsTable(round.findings)});
    return answer;
}

void addLines(std::vector<ScreenLine> &lines, const std::string &text) {
    for (const std::string &line : language::linesOf(text))
        lines.push_back({line});
}

Emphasis emphasisOf(Severity severity) {
    constexpr Emphasis kEmphases[] = {Emphasis::None, Emphasis::None, Emphasis::Warning,
                                      Emphasis::Fault};
    return kEmphases[static_cast<size_t>(severity)];
}

/** On a terminal the findings stand out. */
std::vector<ScreenLine> screenLines(const Round &round, size_t columns) {
    std::vector<ScreenLine> lines = {{headline(round), Emphasis::Bold}, {""}};
    for (const FindingLine &line : findingLines(round.findings, columns)) {
        lines.push_back({line.text, emphasisOf(line.severity)});
    }
    if (!round.findings.empty())
        lines.emplace_back();
    addLines(lines, round.report.toText());
    return lines;
}

std::string textOf(const Round &round) {
    std::string text;
    for (const ScreenLine &line : screenLines(round, kPageWidth))
        text += line.text + "\n";
    return text + "\n";
}

ExitCode print(const Console &console, const Round &round) {
    const auto size = console.terminalSize();
    const Report answer = answerOf(round);
    const ExitCode code = console.print(
        answer, size ? screenText(screenLines(round, size->columns), *size) : textOf(round));
    return round.isAsked ? code : ExitCode::Board;
}

/** One line, for people and programs alike; on a terminal it stands out as what it tells of does.
 */
void printLine(const Console &console, const Report &line, const ScreenLine &text) {
    console.print(line, (console.terminalSize() ? lineText(text) : text.text) + "\n");
}

void printStart(const Console &console, const Round &round, size_t values) {
    Section section = {"", "", {}};
    section.add("time", "Time", textCell(round.time));
    section.add("values", "Values", numberCell(static_cast<int64_t>(values)));
    printLine(console, {{section}, {}, "start"},
              {round.time + "  " + std::to_string(values) + " values are watched"});
}

void printChange(const Console &console, const std::string &time, const ValueChange &change) {
    Section section = {"", "", {}};
    section.add("time", "Time", textCell(time));
    section.add("item", "Item", textCell(change.item));
    section.add("before", "Before", change.before);
    section.add("after", "After", change.after);
    const std::string text =
        time + "  " + change.item + ": " + change.before.text + " -> " + change.after.text;
    printLine(console, {{section}, {}, "change"}, {text, emphasisOf(change.severity)});
}

/** Prints what has changed since the round before. */
ExitCode printChanges(const Console &console, ChangeWatch &changes, const Round &round) {
    const bool isFirst = changes.size() == 0;
    const std::vector<ValueChange> changed = changes.take(round);
    if (isFirst && changes.size() != 0)
        printStart(console, round, changes.size());
    for (const ValueChange &change : changed)
        printChange(console, round.time, change);
    return round.isAsked && round.report.failures.empty() ? ExitCode::Ok : ExitCode::Board;
}

/** Through the calls that advance a virtual board's time. */
void pause(uint32_t milliseconds) {
    if (milliseconds >= kMsPerSecond)
        sleep(milliseconds / kMsPerSecond);
    if (milliseconds % kMsPerSecond != 0)
        usleep(milliseconds % kMsPerSecond * 1000);
}

ExitCode watch(Console &console, const Watching &watching) {
    requireBoard();
    console.answerInLines();
    endOnInterrupt(console.terminalSize().has_value());
    PoeTour tour;
    ChangeWatch changes;
    for (uint32_t rounds = 1;; ++rounds) {
        ExitCode code = ExitCode::Ok;
        {
            const Uninterrupted whole;
            const Round round = lookAround(watching.parts, tour);
            code = watching.isOfChanges ? printChanges(console, changes, round)
                                        : print(console, round);
        }
        if (rounds == watching.count)
            return code;
        pause(watching.intervalMs);
    }
}

} // namespace

void addWatchCommand(Command &root) {
    const auto watching = std::make_shared<Watching>();
    Command &command =
        root.command("watch", "Show the unit again and again: what is wrong first, then "
                              "temperature, fans, supplies, PoE, SFP cages, clock and lamps.\n"
                              "Ends with Ctrl-C; with --json each round is a line");
    command.option("--interval", "SECONDS", "Pause between rounds, 0.1-3600 (default 2)",
                   seconds(watching->intervalMs, kShortestMs, kLongestMs));
    command.option(
        "--count", "N", "How many rounds (default: until stopped)",
        [watching](const std::string &word) { numberFromOne(watching->count.emplace())(word); });
    command.option("--only", "PARTS",
                   "What to look at, with commas: " + partWords() + " (default: all)",
                   partsParser(watching->parts));
    command.flag("--changes", "Print only what changes, a line each, with the time",
                 watching->isOfChanges);
    command.detail(
        "Ctrl-C is its proper end, exit code 0.\n"
        "What is wrong is the judgement of 'iodbg check'.\n"
        "On a terminal the picture is redrawn in place, elsewhere each round is a block of lines "
        "that begins with its time.\n"
        "With --changes what is wrong at the start is told first. Clocks run on unsaid, and which "
        "PoE ports are on is known when all have been asked. The lines are written at once: "
        "'>>FILE' and 'tee' make a log of them.\n"
        "Parts that are not asked for are not read.\n"
        "The PoE controller takes 200 ms for each answer, so that each round asks for four ports.");
    command.example("iodbg watch")
        .example("iodbg watch --interval 10 --count 6 --json")
        .example("iodbg watch --changes --only poe,fans");
    command.does([watching](Console &console) { return watch(console, *watching); });
}

} // namespace iodbg
