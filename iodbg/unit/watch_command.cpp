// iodbg watch: the unit as it changes.

#include "bsp.h"
#include "command_line/page.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/clocks.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/chassis/health.h"
#include "iodbg/chassis/lamps.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/interrupt.h"
#include "iodbg/core/screen.h"
#include "iodbg/poe/health.h"
#include "iodbg/poe/tour.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/health.h"
#include "iodbg/unit/buses.h"
#include "iodbg/unit/commands.h"
#include "iodbg/unit/grounds.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace iodbg {

namespace {

constexpr uint32_t kMsPerSecond = 1000;
constexpr uint32_t kShortestMs = 100;
constexpr uint32_t kLongestMs = 3600 * kMsPerSecond;

struct Watching {
    uint32_t intervalMs = 2 * kMsPerSecond;
    std::optional<uint32_t> count; // without it: until stopped
};

/** What one round has found. */
struct Round {
    std::string time;
    Findings findings; // but what is good
    Report report;
    bool isAsked = true; // else nothing of the unit could be reached
};

// Reading

/** What `iodbg check` says of the parts that are quick to read. */
Findings quickFindings(const Model &model) {
    Findings all;
    for (Findings &part : std::vector<Findings>{temperatureFindings(), fanFindings(model),
                                                supplyFindings(model), poeControllerFindings(model),
                                                cageLineFindings(model), clockFindings(model)})
        std::move(part.begin(), part.end(), std::back_inserter(all));
    blameBuses(all, 0);
    return all;
}

/** What somebody should know of. */
Findings withoutGood(const Findings &all) {
    Findings findings;
    std::copy_if(all.begin(), all.end(), std::back_inserter(findings), [](const Finding &finding) {
        return finding.severity() >= Severity::Warning || finding.cause.has_value();
    });
    return findings;
}

void addCageSummary(Report &report, const Model &model) {
    Section section = {"sfp", "SFP cages", {}};
    CageSummary summary;
    const int32_t status = readCages(model, summary);
    section.add("plugged", "Modules in",
                report.tried(section.path("plugged"), status, portsCell(summary.plugged)));
    if (status == BSP_OK) {
        section.add("rx_loss", "Loss of signal", portsCell(summary.lostSignal));
        section.add("tx_fault", "Transmitter fault", portsCell(summary.txFault));
    }
    report.parts.emplace_back(section);
}

void addParts(Report &report, const Model &model, PoeTour &tour) {
    Section climate = {"climate", "Climate", {}};
    addItems(report, climate, kClimateItems);
    report.parts.emplace_back(climate);
    report.parts.emplace_back(fanTable(report, model));
    report.parts.emplace_back(supplyTable(report, model));
    if (model.poePorts > 0)
        tour.add(report, model.poePorts);
    if (!model.cages.empty())
        addCageSummary(report, model);
    if (model.hasClock)
        addClocks(report);
    addPanelLamps(report);
}

Round look(PoeTour &tour) {
    Round round;
    round.time = calendarText(systemTime());
    round.report.event = "round";
    const Grounds grounds = judgeGrounds();
    constexpr Unit kNeeded[] = {Unit::KernelModule, Unit::Cpld, Unit::Model};
    round.isAsked = grounds.modelStatus.has_value();
    round.findings =
        withoutGood(grounds.causeAmong(kNeeded) ? grounds.findings : quickFindings(grounds.model));
    if (grounds.modelStatus != BSP_OK) {
        Section section = {"model", "Model", {}};
        // Where nothing could be asked the findings say why.
        section.add("device_id", "Device id",
                    grounds.modelStatus
                        ? round.report.tried(section.path("device_id"), *grounds.modelStatus, {},
                                             round.findings.front().toDo())
                        : Cell{"not asked", nullptr});
        round.report.parts.emplace_back(section);
        return round;
    }
    addParts(round.report, grounds.model, tour);
    return round;
}

// Showing

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
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
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
            code = print(console, look(tour));
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
        "What is wrong is the judgement of 'iodbg check'.\nOn a terminal the picture is redrawn in "
        "place, elsewhere each round is a block of lines that begins with its time.\nThe PoE "
        "controller takes 200 ms for each answer, so that each round asks for four ports.");
    command.example("iodbg watch").example("iodbg watch --interval 10 --count 6 --json");
    command.does([watching](Console &console) { return watch(console, *watching); });
}

} // namespace iodbg
