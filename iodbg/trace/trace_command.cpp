// iodbg trace: shows what a program sends to the board.

#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/trace/commands.h"
#include "iodbg/trace/recording.h"
#include "iodbg/trace/traced_program.h"
#include "language/refused.h"
#include "language/times.h"
#include "language/trace_json.h"
#include "language/trace_text.h"

#include <csignal>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <unistd.h>

namespace iodbg {

namespace {

using language::TraceRecord;

struct TraceWords {
    Destination destination;
    std::vector<std::string> program;
};

/** Where the lines go: beside what the program prints, or into a file. */
class TraceLines {
  public:
    TraceLines(Console &console, const Destination &destination)
        : console_(console), asJson_(console.isJson()), destination_(destination) {
        if (!destination.path.empty() && !destination.isStandardOutput())
            saving_.emplace(console, destination);
    }

    void add(const TraceRecord &record) {
        text_ += asJson_ ? language::traceJson(record).dump(
                               -1, ' ', false, nlohmann::json::error_handler_t::replace)
                         : language::secondsText(record.timeNs) + " " + std::to_string(record.pid) +
                               " " + language::traceText(record);
        text_ += "\n";
    }

    /** Hands on what has been added. */
    void flush() {
        const ByteView bytes(reinterpret_cast<const uint8_t *>(text_.data()), text_.size());
        if (saving_.has_value())
            saving_->write(bytes);
        else if (destination_.isStandardOutput())
            console_.giveData(bytes);
        else if (!writeAll(STDERR_FILENO, bytes))
            throw Failure::file("write the trace to standard error", "save it with --output");
        text_.clear();
    }

    void finish() {
        flush();
        if (saving_.has_value())
            saving_->finish();
    }

  private:
    Console &console_;
    const bool asJson_;
    const Destination &destination_;
    std::optional<Saving> saving_;
    std::string text_;
};

/** Hands lines on as long as that can be done: the program goes on in any case. */
class Telling {
  public:
    explicit Telling(TraceLines &lines) : lines_(lines) {}

    void flush() {
        attempt([this] { lines_.flush(); });
    }
    void finish() {
        attempt([this] { lines_.finish(); });
        if (trouble_)
            throw Failure(*trouble_);
    }
    void add(const TraceRecord &record) {
        if (!trouble_)
            lines_.add(record);
    }

  private:
    template <typename Work>
    void attempt(Work work) {
        if (trouble_)
            return;
        try {
            work();
        } catch (const Failure &failure) {
            trouble_ = failure;
        }
    }

    TraceLines &lines_;
    std::optional<Failure> trouble_;
};

/** Tells what comes until the program, and all that it has started, has ended. */
void follow(Recording &recording, TracedProgram &program, TraceLines &lines) {
    Telling telling(lines);
    for (bool isThere = true; isThere;) {
        isThere = program.isThere();
        bool hasTold = false;
        for (auto record = recording.take(); record.has_value(); record = recording.take()) {
            telling.add(*record);
            hasTold = true;
        }
        telling.flush();
        if (isThere && !hasTold)
            pauseOnHost();
    }
    for (auto record = recording.takeLast(); record.has_value(); record = recording.takeLast())
        telling.add(*record);
    telling.finish();
}

int trace(Console &console, const TraceWords &words) {
    std::signal(SIGPIPE, SIG_IGN); // the program goes on when nobody reads of it any more
    Recording recording;
    TraceLines lines(console, words.destination);
    TracedProgram program(words.program, recording.path(), console.outputDescriptor());
    follow(recording, program, lines);
    if (recording.lost() > 0)
        std::fprintf(stderr,
                     "iodbg: %u requests came faster than they could be told, and are "
                     "missing\n",
                     recording.lost());
    return program.end();
}

} // namespace

void addTraceCommand(Command &root) {
    Command &command = root.command(
        "trace", "Show what a program sends to the board, as it runs: trace -- PROGRAM "
                 "[ARGUMENTS...]");
    const auto words = std::make_shared<TraceWords>();
    words->destination.isSecret = true; // what is read from EEPROMs stands in it
    command.option("--output", "FILE", "Save the trace in a file, not on standard error",
                   fileName(words->destination.path));
    command.flag("--force", kForceHelp, words->destination.mayReplace);
    command.takesProgram(
        [words](const std::vector<std::string> &unknown, const std::vector<std::string> &line) {
            if (!unknown.empty() || line.empty())
                throw language::Refused("PROGRAM behind '--' is required: iodbg trace -- PROGRAM "
                                        "[ARGUMENTS...]");
            words->program = line;
        });
    command.detail(
        "Each request is a line: seconds since the start, process id, request and answer; with "
        "--json an object, as 'vboard trace --json' has them and 'vboard replay' takes them.\n"
        "The program keeps standard input and output. All that it starts is traced, too, and "
        "waited for; once it has ended, Ctrl-C ends the rest of the trace.\n"
        "Its exit code and signals are those of the trace. 125: it was not started, or what it "
        "sends would not be seen, as of statically linked and set-user-id programs.\n"
        "What passes by way of a mapped page, as MDIO does, shows as the mapping alone.");
    command.example("iodbg trace -- iodbg temperature")
        .example("iodbg trace --json --output trace.json -- iodbg show");
    command.does([words](Console &console) { return trace(console, *words); });
}

} // namespace iodbg
