// `vboard panel`.

#include "virtual_board/words/panel_text.h"

#include "terminal/screen.h"
#include "virtual_board/board/circuits.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interrupt.h"
#include "virtual_board/command/open_board.h"

#include <cstdio>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace vboard {

namespace {

std::string drawn(const vb::BoardFolder &folder, bool hasColour) {
    const auto lock = lockBoard(folder);
    vb::Board &board = *folder.board();
    const uint64_t now = vb::clockNow(board.clock, vb::hostNow());
    vb::advanceBoard(board, now);
    return vb::panelText(board, now, hasColour);
}

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

void printPanel(const std::string &folder, bool isWatching, double intervalSeconds) {
    vb::BoardFolder board;
    openBoard(board, folder);
    const Rounds rounds;
    do {
        const auto screen = terminal::sizeOf(STDOUT_FILENO);
        const std::string panel = drawn(board, screen && terminal::wantsColours());
        const bool isRedrawn = isWatching && screen;
        std::fputs((isRedrawn ? terminal::picture(linesOf(panel), *screen) : panel).c_str(),
                   stdout);
    } while (std::fflush(stdout) == 0 && isWatching && rounds.pause(intervalSeconds));
}

} // namespace vboard
