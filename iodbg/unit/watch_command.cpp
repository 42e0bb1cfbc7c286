// iodbg watch: the unit as it changes.

#include "command_line/page.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/interrupt.h"
#include "iodbg/core/screen.h"
#include "iodbg/poe/tour.h"
#include "iodbg/unit/commands.h"
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

/** On a terminal the findings stand out. */
std::vector<ScreenLine> screenLines(const Round &round, size_t columns) {
    std::vector<ScreenLine> lines = {{headline(round), Emphasis::Bold}, {""}};
    for (const FindingLine &line : findingLines(round.findings, columns)) {
        constexpr Emphasis kEmphases[] = {Emphasis::None, Emphasis::None, Emphasis::Bold,
                                          Emphasis::Inverse};
        lines.push_back({line.text, kEmphases[static_cast<size_t>(line.severity)]});
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
    for (uint32_t rounds = 1;; ++rounds) {
        ExitCode code = ExitCode::Ok;
        {
            const Uninterrupted whole;
            code = print(console, lookAround(tour));
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
    command.detail(
        "Ctrl-C is its proper end, exit code 0.\n"
        "What is wrong is the judgement of 'iodbg check'.\n"
        "On a terminal the picture is redrawn in place, elsewhere each round is a block of lines "
        "that begins with its time.\n"
        "The PoE controller takes 200 ms for each answer, so that each round asks for four ports.");
    command.example("iodbg watch").example("iodbg watch --interval 10 --count 6 --json");
    command.does([watching](Console &console) { return watch(console, *watching); });
}

} // namespace iodbg
