// `vboard play`.

#include "command_line/screen.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interruption.h"
#include "virtual_board/command/play_report.h"
#include "virtual_board/command/player.h"
#include "virtual_board/command/scenario_check.h"
#include "virtual_board/command/scenario_file.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>
#include <unistd.h>

namespace vboard {

namespace {

struct PlayArguments {
    std::string folder, file;
    bool asJson = false;
    bool isChecking = false; // nothing is played
    bool isWithoutRun = false;
};

/** Prints what becomes of each step, and of all. */
class Progress {
  public:
    Progress(const Scenario &scenario, bool asJson)
        : scenario_(scenario), asJson_(asJson),
          hasTerminal_(!asJson && terminal::sizeOf(STDOUT_FILENO).has_value()) {}

    void begin(const Step &step) const {
        setPlaceOfWork(placeText(scenario_, step) + ": " + stepText(step));
        if (hasTerminal_)
            print(underWay(step));
    }

    void step(const Outcome &outcome) const {
        print((hasTerminal_ ? kOverwrite : "") + (asJson_ ? stepJson(outcome) : stepLine(outcome)));
    }

    void verdict(const Outcome &outcome) const {
        print(asJson_ ? verdictJson(scenario_, outcome) : verdictLine(scenario_, outcome));
    }

  private:
    static constexpr char kOverwrite[] = "\r\x1b[K";

    /** At once, also for a program that reads it. */
    static void print(const std::string &text) {
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }

    const Scenario &scenario_;
    const bool asJson_;
    const bool hasTerminal_;
};

/** Where and why a play has failed. */
std::string failureText(const Scenario &scenario, const Step &step, const std::string &reason) {
    return placeText(scenario, step) + ": " + stepText(step) + ": " + reason;
}

/** Does step by step. */
class Play {
  public:
    Play(const Board &board, const Scenario &scenario, const Progress &printer)
        : scenario_(scenario), printer_(printer), player_(board) {}

    void run() {
        for (const Step &step : scenario_.steps) {
            printer_.begin(step);
            try {
                player_.play(step);
            } catch (const NotAsExpected &difference) {
                tell(step, difference.what());
                fail(step, difference.what());
            } catch (const CallFailed &failure) {
                stop(step, failure.what());
                throw CallFailed(failure.status(), failureText(scenario_, step, failure.what()));
            } catch (const std::exception &failure) {
                stop(step, failure.what());
                throw language::Refused(failureText(scenario_, step, failure.what()));
            }
            tell(step, "");
            ++passed_;
        }
        std::string reason;
        if (const Step *wrong = player_.finish(reason))
            fail(*wrong, reason);
        end(nullptr, "");
    }

  private:
    void tell(const Step &step, const std::string &reason) {
        printer_.step({&step, passed_ + 1, time(), reason});
    }

    /** Ends the play at a step that cannot be done. */
    void stop(const Step &step, const std::string &reason) {
        tell(step, reason);
        end(&step, reason);
    }

    void end(const Step *failed, const std::string &reason) {
        printer_.verdict({failed, passed_, time(), reason});
    }

    [[noreturn]] void fail(const Step &step, const std::string &reason) {
        end(&step, reason);
        throw ExpectationFailed(failureText(scenario_, step, reason));
    }

    /** The last one that is known, once the board is gone. */
    uint64_t time() {
        try {
            timeNs_ = player_.passedNs();
        } catch (const CallFailed &) { // it has been told otherwise
        }
        return timeNs_;
    }

    const Scenario &scenario_;
    const Progress &printer_;
    Player player_;
    size_t passed_ = 0;
    uint64_t timeNs_ = 0;
};

/** Refuses a scenario that runs programs. */
void refuseRun(const Scenario &scenario) {
    for (const Step &step : scenario.steps) {
        if (step.deed == Deed::Run)
            throw language::Refused(placeText(scenario, step) + ": " + stepText(step) +
                                    ": programs are not run with --no-run");
    }
}

void play(const PlayArguments &arguments) {
    const Board board(arguments.folder);
    const Scenario scenario = readScenario(arguments.file);
    if (arguments.isWithoutRun)
        refuseRun(scenario);
    if (arguments.isChecking && arguments.asJson)
        std::fputs(scenarioJson(scenario).c_str(), stdout);
    checkScenario(scenario, arguments.folder);
    if (arguments.isChecking)
        return;
    const Interruptible work;
    const Progress printer(scenario, arguments.asJson);
    Play(board, scenario, printer).run();
}

void definePlay(Command &command) {
    const auto arguments = std::make_shared<PlayArguments>();
    addFolder(command, arguments->folder);
    command.argument("FILE", "The scenario, a file of TOML; '-': standard input",
                     {text(arguments->file), {{}, Offers::Files::Paths, nullptr}});
    command.flag("--check", "Only tell whether the board can be played this scenario",
                 arguments->isChecking);
    command.flag("--no-run", "Refuse a scenario that runs programs", arguments->isWithoutRun);
    command.flag("--json", "Print one JSON object per step, and the verdict", arguments->asJson);
    command.detail("A scenario has steps, each behind a line [[step]]. One does one thing, at once "
                   "or when its "
                   "moment has come, and the first that fails ends the play, with exit code 5.\n"
                   "The whole file is judged before anything is done to the board.\n"
                   "With --check and --json the steps are printed, whether the board can be played "
                   "them or not.\n"
                   "Programs that steps leave in the background are ended with the play.");
    command.glossary({"Moments of a step",
                      {{"at=SECONDS", "since the play began, on the board's clock"},
                       {"after=SECONDS", "since the step before"},
                       {"when=CONDITION",
                        "once it holds, which may take within=SECONDS, 60 unless it is given"}}});
    command.glossary(
        {"What a step does",
         {{"set.NAME=VALUE", "changes properties, all of a step at once"},
          {"fault=RULE", "adds a rule with the words of 'vboard fault add', named by as=NAME"},
          {"clear=NAME", "removes a rule, or with \"all\" every rule"},
          {"advance=SECONDS", "moves a clock that does not move by itself"},
          {"run=PROGRAM", "runs a command line, or an array of words, which has to end with "
                          "exit=CODE, 0 unless it is "
                          "given, and in limit=SECONDS of the host's time, 600; with "
                          "background=true it stays, named "
                          "by as=NAME"},
          {"stop=NAME", "ends such a program"},
          {"expect=CONDITION",
           "over properties of the board; beside 'run', or with from=NAME, over what a program "
           "prints as JSON; it has to hold at once, or within=SECONDS"}}});
    command.example("vboard play board fan-failure.toml")
        .example("vboard play board fan-failure.toml --check")
        .example("vboard play board fan-failure.toml --json");
    command.does([arguments] { play(*arguments); });
}

} // namespace

void addPlay(Command &root) {
    root.command("play", "Play a scenario: do to a board what a file says, and expect what it says",
                 definePlay);
}

} // namespace vboard
