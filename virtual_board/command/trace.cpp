// `vboard trace`.

#include "language/trace_json.h"
#include "language/trace_text.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interrupt.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vboard {

namespace {

constexpr double kFollowSeconds = 0.1;

/** Requests copied out of the ring, so that the board is not kept waiting while they are printed.
 */
struct Excerpt {
    std::vector<vb::TraceRecord> records;
    uint64_t lost = 0; // older ones that were wanted but overwritten
    uint64_t next = 0; // the running number behind the last
};

/** The requests from a running number on; of more than limit only the newest. */
Excerpt excerptFrom(const vb::TraceRing &ring, uint64_t number, uint32_t limit) {
    Excerpt excerpt;
    const uint64_t from = number > ring.total ? 0 : number; // the trace was cleared meanwhile
    const uint64_t oldest = std::max(from, vb::traceOldest(ring));
    const uint64_t kept = ring.total - oldest;
    const uint64_t shown = std::min<uint64_t>(kept, limit);
    excerpt.records.reserve(static_cast<size_t>(shown));
    for (uint64_t i = ring.total - shown; i < ring.total; ++i)
        excerpt.records.push_back(vb::traceAt(ring, i));
    if (limit > kept)
        excerpt.lost = oldest - from;
    excerpt.next = ring.total;
    return excerpt;
}

void print(const vb::TraceRecord &record, bool asJson) {
    if (asJson)
        printJsonLine(language::traceJson(record));
    else
        std::printf("%s %d %s\n", vb::secondsText(record.timeNs).c_str(), record.pid,
                    language::traceText(record).c_str());
}

void print(const Excerpt &excerpt, bool asJson) {
    if (excerpt.lost > 0)
        std::fprintf(stderr, "vboard: %llu older requests were overwritten\n",
                     static_cast<unsigned long long>(excerpt.lost));
    for (const vb::TraceRecord &record : excerpt.records)
        print(record, asJson);
    std::fflush(stdout);
}

/** Prints what comes, until Ctrl-C or a reader that has gone ends it. */
void follow(const TraceArguments &arguments) {
    vb::BoardFolder folder;
    openBoard(folder, arguments.folder);
    uint32_t limit = arguments.last;
    uint64_t next = 0;
    const Rounds rounds;
    do {
        Excerpt excerpt;
        {
            const auto lock = lockBoard(folder);
            excerpt = excerptFrom(folder.board()->trace, next, limit);
        }
        print(excerpt, arguments.asJson);
        limit = UINT32_MAX; // only what was there at the start is limited
        next = excerpt.next;
    } while (rounds.pause(kFollowSeconds));
}

void defineTrace(Command &command) {
    const auto arguments = std::make_shared<TraceArguments>();
    addFolder(command, arguments->folder);
    command.flag("--json", "Print one JSON object per line", arguments->asJson);
    command.option("--last", "N", "Only the last N requests", number(arguments->last));
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
    if (arguments.isFollowing) {
        follow(arguments);
        return;
    }
    Excerpt excerpt;
    {
        const LockedBoard board(arguments.folder);
        excerpt = excerptFrom(board->trace, 0, arguments.last);
        if (arguments.isClearing) {
            board->trace.cleared = board->trace.total;
            board.folder().tellOfChange();
        }
    }
    print(excerpt, arguments.asJson);
}

} // namespace vboard
