// `vboard replay`.

#include "virtual_board/command/replay.h"

#include "language/texts.h"
#include "language/times.h"
#include "language/trace_json.h"
#include "language/trace_reader.h"
#include "language/trace_text.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

namespace vboard {

namespace {

using language::Difference;
using language::NotSent;
using language::TraceKind;
using language::TraceRecord;
using language::Variation;
using nlohmann::ordered_json;

struct ReplayArguments {
    std::string folder, file;
    bool asJson = false;
    bool showsAll = false; // answers that may differ, too
    bool isStrict = false; // these have to be the same
};

std::vector<RecordedRequest> readRequests(std::istream &lines, const std::string &file) {
    std::vector<RecordedRequest> requests;
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        if (line.empty())
            continue; // editors leave one at the end
        const std::string place = file + ":" + std::to_string(number);
        requests.push_back(
            {number, language::about(place, [&] { return language::readTraceLine(line); })});
    }
    if (lines.bad())
        throw language::Refused("cannot read " + file + ": " + std::strerror(errno));
    if (requests.empty())
        throw language::Refused(file + " has no request in it");
    return requests;
}

std::vector<RecordedRequest> readRequests(const std::string &file) {
    if (file == "-")
        return readRequests(std::cin, "standard input");
    std::ifstream lines(file, std::ios::binary);
    if (!lines)
        throw language::Refused("cannot read " + file + ": " + std::strerror(errno));
    return readRequests(lines, file);
}

/** The clock of the board, for one who sends requests at their times. */
class BoardTime {
  public:
    explicit BoardTime(const Board &board) : board_(board) {
        call([&](VBoardError *error) { return vboardTime(board_, &now_, error); });
        VBoardError error = {};
        const int32_t status = vboardAdvance(board_, 0, kPatienceNs, &error);
        stands_ = status == VBOARD_OK;
        if (!stands_ && status != VBOARD_E_REFUSED)
            throw CallFailed(error);
    }

    uint64_t now() const { return now_; }

    /** Lets it come, or brings it there. */
    void reach(uint64_t dueNs) {
        if (dueNs <= now_)
            return;
        if (stands_) {
            call([&](VBoardError *error) {
                return vboardAdvance(board_, dueNs - now_, kPatienceNs, error);
            });
            now_ = dueNs;
            return;
        }
        for (;;) {
            call([&](VBoardError *error) { return vboardTime(board_, &now_, error); });
            if (now_ >= dueNs)
                return;
            const timespec pause = {
                0, static_cast<long>(std::min<uint64_t>(dueNs - now_, kMostAtOnceNs))};
            nanosleep(&pause, nullptr);
        }
    }

  private:
    static constexpr uint64_t kPatienceNs = 2000000000;
    static constexpr uint64_t kMostAtOnceNs = 20000000; // the board's time may be a faster one

    const Board &board_;
    uint64_t now_ = 0;
    bool stands_ = false;
};

TraceRecord send(const Board &board, const TraceRecord &request) {
    const std::string line = language::traceJson(request).dump();
    return language::readTraceLine(textOf([&](char **answer, VBoardError *error) {
        return vboardSend(board, line.c_str(), answer, error);
    }));
}

} // namespace

uint64_t ReplayTimes::dueAt(const TraceRecord &record) {
    if (!isBegun_) {
        firstNs_ = record.timeNs;
        isBegun_ = true;
    }
    const uint64_t passed = record.timeNs > firstNs_ ? record.timeNs - firstNs_ : 0;
    uint64_t &awake = awake_[record.pid];
    dueNs_ = std::max({dueNs_, startNs_ + passed, awake});
    if (record.kind == TraceKind::Sleep)
        awake = dueNs_ + std::min(record.sleepNs, kLongestSleepNs);
    return dueNs_;
}

bool ReplayCount::isPassed(bool isStrict) const {
    return different == 0 && (!isStrict || varyingTotal() == 0);
}

uint64_t ReplayCount::varyingTotal() const {
    uint64_t total = 0;
    for (const auto &[variation, count] : varying)
        total += count;
    return total;
}

std::string replayText(const ReplayCount &count) {
    std::string text = "Answers: " + std::to_string(count.same) + " the same, " +
                       std::to_string(count.different) + " different\n";
    for (const auto &[variation, number] : count.varying)
        text += std::to_string(number) + " " + (number == 1 ? "differs" : "differ") + " in what " +
                language::variationText(variation) + "\n";
    for (const auto &[reason, number] : count.notSent)
        text += std::to_string(number) + " not sent: " + language::notSentText(reason) + "\n";
    return text;
}

nlohmann::ordered_json replayJson(const ReplayCount &count, bool isPassed) {
    ordered_json varying = ordered_json::object();
    for (const Variation variation : {Variation::Time, Variation::Measured, Variation::Unknown}) {
        const auto found = count.varying.find(variation);
        varying[language::variationName(variation)] =
            found != count.varying.end() ? found->second : 0;
    }
    ordered_json notSent = ordered_json::object();
    for (NotSent reason = NotSent::Waits; reason <= NotSent::Damaged;
         reason = static_cast<NotSent>(static_cast<int>(reason) + 1)) {
        const auto found = count.notSent.find(reason);
        notSent[language::notSentName(reason)] = found != count.notSent.end() ? found->second : 0;
    }
    return {{"event", "verdict"}, {"same", count.same},  {"different", count.different},
            {"varying", varying}, {"not_sent", notSent}, {"passed", isPassed}};
}

namespace {

/** Sends request by request, and prints what differs. */
class Replay {
  public:
    Replay(const Board &board, const ReplayArguments &arguments)
        : board_(board), arguments_(arguments), time_(board), times_(time_.now()) {}

    void run(const std::vector<RecordedRequest> &requests) {
        for (const RecordedRequest &request : requests)
            play(request);
        const bool isPassed = count_.isPassed(arguments_.isStrict);
        print(arguments_.asJson ? replayJson(count_, isPassed).dump() + "\n" : replayText(count_));
        if (!isPassed)
            throw ExpectationFailed(std::to_string(failed()) + " of " + std::to_string(sent()) +
                                    " answers differ from the recorded "
                                    "ones");
    }

  private:
    uint64_t failed() const {
        return count_.different + (arguments_.isStrict ? count_.varyingTotal() : 0);
    }
    uint64_t sent() const { return count_.same + count_.different + count_.varyingTotal(); }

    void play(const RecordedRequest &request) {
        const uint64_t dueNs = times_.dueAt(request.record);
        if (const NotSent reason = language::notSent(request.record); reason != NotSent::Sent) {
            ++count_.notSent[reason];
            return;
        }
        time_.reach(dueNs);
        const TraceRecord answered = send(board_, request.record);
        const Difference found = language::difference(request.record, answered);
        const bool mayVary = found.variation != Variation::None;
        if (found.words.empty())
            ++count_.same;
        else if (mayVary)
            ++count_.varying[found.variation];
        else
            ++count_.different;
        if (!found.words.empty() && (!mayVary || arguments_.showsAll || arguments_.isStrict))
            tell(request, answered, found);
    }

    void tell(const RecordedRequest &request, const TraceRecord &answered,
              const Difference &found) const {
        if (arguments_.asJson) {
            const ordered_json line = {{"event", "difference"},
                                       {"line", request.line},
                                       {"variation", language::variationName(found.variation)},
                                       {"differs", found.words},
                                       {"recorded", language::traceJson(request.record)},
                                       {"answered", language::traceJson(answered)}};
            print(line.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
            return;
        }
        std::string text = std::to_string(request.line) + ": " +
                           language::secondsText(request.record.timeNs) + " " +
                           std::to_string(request.record.pid) + "\n  recorded  " +
                           language::traceText(request.record) + "\n  answered  " +
                           language::traceText(answered) + "\n";
        for (const std::string &words : found.words)
            text += "  " + words + "\n";
        print(text);
    }

    /** At once, also for a program that reads it. */
    static void print(const std::string &text) {
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }

    const Board &board_;
    const ReplayArguments &arguments_;
    BoardTime time_;
    ReplayTimes times_;
    ReplayCount count_;
};

void replay(const ReplayArguments &arguments) {
    const Board board(arguments.folder);
    const std::vector<RecordedRequest> requests = readRequests(arguments.file);
    Replay(board, arguments).run(requests);
}

void defineReplay(Command &command) {
    const auto arguments = std::make_shared<ReplayArguments>();
    addFolder(command, arguments->folder);
    command.argument("TRACE", "A trace as JSON lines; '-': standard input",
                     {text(arguments->file), {{}, Offers::Files::Paths, nullptr}});
    command.flag("--all",
                 "Also show answers that may differ: of time, of measurements, and of "
                 "what no virtual board has",
                 arguments->showsAll);
    command.flag("--strict", "Expect these to be the same, too", arguments->isStrict);
    command.flag("--json", "Print one JSON object per answer that differs, and the verdict",
                 arguments->asJson);
    command.detail(
        "TRACE is what 'vboard trace --json' or 'iodbg trace --json' has printed. The whole file "
        "is read before anything is sent.\n"
        "The requests are sent without a program, in their order, the first one at once and each "
        "at its time behind it: a clock that stands is moved, another one is waited for.\n"
        "An answer that differs is shown with the recorded one, and the exit code is 5.");
    command.example("vboard replay board trace.json")
        .example("vboard replay board trace.json --strict --json");
    command.does([arguments] { replay(*arguments); });
}

} // namespace

void addReplay(Command &root) {
    root.command("replay",
                 "Send the requests of a trace to a board once more, and show which answers differ",
                 defineReplay);
}

} // namespace vboard
