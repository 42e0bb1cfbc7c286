// `vboard advance`.

#include "command_line/line.h"
#include "language/times.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

constexpr uint64_t kNsPerMs = 1000000;
constexpr uint32_t kLongestMs = 4000000000; // 46 days

struct AdvanceArguments {
    std::string folder;
    uint32_t ms = 0;
    uint32_t patienceMs = VBOARD_USUAL_PATIENCE / kNsPerMs;
};

void defineAdvance(Command &command) {
    const auto arguments = std::make_shared<AdvanceArguments>();
    addFolder(command, arguments->folder);
    command.argument("SECONDS", "By how much; 0 waits until all programs wait",
                     seconds(arguments->ms, 0, kLongestMs));
    command
        .option("--patience", "SECONDS", "How long, in real time, a thread may run until it waits",
                seconds(arguments->patienceMs, 1, kLongestMs))
        .usually("2");
    command
        .detail(
            "A virtual clock is set. A stepped one goes from deadline to deadline: at each the "
            "thread goes on that waits for it, and the next one when all threads of the board's "
            "programs wait again. Exit code 4: one of them does not, and is named; the clock "
            "stands where it was woken.")
        .example("vboard advance board 60")
        .example("vboard advance board 0.5 --patience 10");
    command.does([arguments] {
        const Board board(arguments->folder);
        call([&](VBoardError *error) {
            return vboardAdvance(board, arguments->ms * kNsPerMs, arguments->patienceMs * kNsPerMs,
                                 error);
        });
    });
}

} // namespace

void addAdvance(Command &root) {
    root.command("advance", "Move a virtual or stepped clock", defineAdvance);
}

} // namespace vboard
