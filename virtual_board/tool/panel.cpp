// `vboard panel`.

#include "virtual_board/words/panel_text.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/tool/commands.h"
#include "virtual_board/tool/open_board.h"

#include <chrono>
#include <cstdio>
#include <thread>
#include <unistd.h>

namespace vboard {

namespace {

std::string drawn(const vb::BoardFolder &folder, bool hasColour) {
    const auto lock = lockBoard(folder);
    vb::Board &board = *folder.board();
    const uint64_t now = vb::clockNow(board.clock, vb::hostNow());
    vb::advanceBoard(board, now);
    return vb::panelText(board, now, hasColour);
}

} // namespace

void printPanel(const std::string &folder, bool isWatching, double intervalSeconds) {
    constexpr char kClearScreen[] = "\x1b[H\x1b[2J";
    vb::BoardFolder board;
    openBoard(board, folder);
    const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    for (;;) {
        std::printf("%s%s", isWatching && isTerminal ? kClearScreen : "",
                    drawn(board, isTerminal).c_str());
        const bool isWritten = std::fflush(stdout) == 0;
        if (!isWatching || !isWritten)
            return;
        std::this_thread::sleep_for(std::chrono::duration<double>(intervalSeconds));
    }
}

} // namespace vboard
