// `vboard trace`.

#include "language/times.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interrupt.h"
#include "virtual_board/command/words.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

namespace vboard {

namespace {

constexpr uint64_t kMostBetweenLooksNs = 200000000; // at Ctrl-C

/** Requests from a position on. */
class Requests {
  public:
    Requests(const Board &board, uint64_t position)
        : position_(position),
          list_([&](VBoardRequest **list, uint32_t *count, VBoardError *error) {
              return vboardTrace(board, &position_, 0, list, count, &lost_, error);
          }) {}

    /** The position behind the last of them. */
    uint64_t next() const { return position_; }
    uint64_t lost() const { return lost_; }
    const VBoardRequest *begin() const { return list_.begin(); }
    const VBoardRequest *end() const { return list_.end(); }

  private:
    uint64_t position_;
    uint64_t lost_ = 0;
    List<VBoardRequest> list_;
};

/** How a request is printed. */
class Printer {
  public:
    explicit Printer(const TraceArguments &arguments)
        : asJson_(arguments.asJson), isNumbering_(arguments.isNumbering) {}

    void print(const VBoardRequest &request) {
        if (!asJson_)
            std::printf("%s %d %s\n", language::secondsText(request.time).c_str(),
                        processOf(request), request.text);
        else if (!isNumbering_)
            std::printf("%s\n", request.json);
        else
            printNumbered(request);
    }

  private:
    /** Its number, or which of the processes it is that have come so far. */
    int32_t processOf(const VBoardRequest &request) {
        if (!isNumbering_)
            return request.pid;
        const auto next = static_cast<int32_t>(numbers_.size()) + 1;
        return numbers_.try_emplace(request.pid, next).first->second;
    }

    void printNumbered(const VBoardRequest &request) {
        nlohmann::json object = nlohmann::json::parse(request.json);
        object["pid"] = processOf(request);
        std::printf("%s\n", object.dump().c_str());
    }

    const bool asJson_, isNumbering_;
    std::map<int32_t, int32_t> numbers_;
};

/** Prints what is there; of more than a limit only the newest. */
void print(const Requests &requests, uint64_t limit, Printer &printer) {
    const auto count = static_cast<uint64_t>(requests.end() - requests.begin());
    if (requests.lost() > 0 && limit > count)
        std::fprintf(stderr, "vboard: %llu older requests were overwritten\n",
                     static_cast<unsigned long long>(requests.lost()));
    const VBoardRequest *first = requests.end() - std::min(count, limit);
    for (const VBoardRequest *request = first; request != requests.end(); ++request)
        printer.print(*request);
    std::fflush(stdout);
}

/** Waits a moment for something new. */
void awaitChange(const Board &board, uint32_t since) {
    VBoardError error = {};
    const int32_t status = vboardAwaitChange(board, since, kMostBetweenLooksNs, &error);
    if (status != VBOARD_OK && status != VBOARD_E_TIMEOUT)
        throw CallFailed(error);
}

/** Prints what comes, until Ctrl-C or a reader that has gone ends it. */
void follow(const Board &board, const TraceArguments &arguments) {
    uint64_t limit = arguments.last;
    uint64_t next = 0;
    Printer printer(arguments);
    for (const Rounds rounds; rounds.pause(0);) {
        const uint32_t changes = vboardChanges(board);
        const Requests requests(board, next);
        print(requests, limit, printer);
        limit = UINT64_MAX; // only what was there at the start is limited
        next = requests.next();
        awaitChange(board, changes);
    }
}

void defineTrace(Command &command) {
    const auto arguments = std::make_shared<TraceArguments>();
    addFolder(command, arguments->folder);
    command.flag("--json", "Print one JSON object per line", arguments->asJson);
    command.option("--last", "N", "Only the last N requests", number(arguments->last));
    command.flag("--number-processes",
                 "Number processes 1, 2, ... as they come, so that the same run shows the same",
                 arguments->isNumbering);
    command.flag("--follow", "Go on with new requests until stopped", arguments->isFollowing);
    command.flag("--clear", "Forget the requests after showing them", arguments->isClearing)
        .notWith("--follow");
    command.detail(
        "With --follow it goes on until Ctrl-C, exit code 0, or until the board is gone, "
        "exit code 1.");
    command.example("vboard trace board --last 10")
        .example("vboard trace board --follow")
        .example("vboard trace board --json --clear");
    command.does([arguments] { printTrace(*arguments); });
}

} // namespace

void addTrace(Command &root) {
    root.command("trace",
                 "Show the requests that reached the board: board time in seconds, process id, "
                 "request",
                 defineTrace);
}

void printTrace(const TraceArguments &arguments) {
    const Board board(arguments.folder);
    if (arguments.isFollowing) {
        follow(board, arguments);
        return;
    }
    const Requests requests(board, 0);
    Printer printer(arguments);
    print(requests, arguments.last, printer);
    if (arguments.isClearing)
        call([&](VBoardError *error) { return vboardClearTrace(board, requests.next(), error); });
}

} // namespace vboard
