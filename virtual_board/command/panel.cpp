// `vboard panel`.

#include "command_line/screen.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interrupt.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

namespace vboard {

namespace {

std::string drawn(VBoard *board, bool hasColours) {
    return textOf([&](char **text, VBoardError *error) {
        return vboardPanel(board, hasColours ? 1 : 0, text, error);
    });
}

void definePanel(Command &command) {
    constexpr uint32_t kLeastMs = 100;
    constexpr uint32_t kMostMs = 3600000;
    constexpr double kMsPerSecond = 1000;
    struct Arguments {
        std::string folder;
        bool isWatching = false;
        bool isOnce = false;
        uint32_t intervalMs = 1000;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.flag("--watch", "Draw it again until stopped", arguments->isWatching);
    command.flag("--once", "Draw it once, as without --watch", arguments->isOnce)
        .notWith("--watch");
    command
        .option("--interval", "SECONDS", "Seconds between drawings, 0.1-3600",
                seconds(arguments->intervalMs, kLeastMs, kMostMs))
        .usually("1")
        .onlyWith("--watch");
    command.detail("With --watch it is drawn until Ctrl-C, exit code 0, or until the board is "
                   "gone, exit code 1.\n"
                   "A terminal is redrawn in place, and what it has no room for is left out at the "
                   "end.");
    command.example("vboard panel board").example("vboard panel board --watch --interval 0.5");
    command.does([arguments] {
        printPanel(arguments->folder, arguments->isWatching, arguments->intervalMs / kMsPerSecond);
    });
}

} // namespace

void addPanel(Command &root) {
    root.command("panel", "Draw the board's front panel", definePanel);
}

void printPanel(const std::string &folder, bool isWatching, double intervalSeconds) {
    const Board board(folder);
    const Rounds rounds;
    do {
        const auto screen = terminal::sizeOf(STDOUT_FILENO);
        const std::string panel = drawn(board, screen && terminal::wantsColours());
        const bool isRedrawn = isWatching && screen;
        std::fputs(
            (isRedrawn ? terminal::picture(language::linesOf(panel), *screen) : panel).c_str(),
            stdout);
    } while (std::fflush(stdout) == 0 && isWatching && rounds.pause(intervalSeconds));
}

} // namespace vboard
