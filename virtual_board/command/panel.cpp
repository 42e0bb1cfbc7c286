// `vboard panel`.

#include "virtual_board/calls/panel.h"
#include "command_line/line.h"
#include "command_line/screen.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/interrupt.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/whole_file.h"
#include "virtual_board/command/words.h"
#include "virtual_board/drawing/page.h"

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

struct PanelArguments {
    std::string folder, svg, html;
    bool asJson = false;
    bool isForced = false;
    bool isWatching = false;
    bool isOnce = false;
    uint32_t intervalMs = 1000;
};

/** The drawings for pages and programs, if one of them is wanted. */
bool saved(const PanelArguments &arguments) {
    if (arguments.svg.empty() && arguments.html.empty() && !arguments.asJson) {
        if (arguments.isForced)
            throw WrongUsage("--force goes with --svg or --html");
        return false;
    }
    const Board board(arguments.folder);
    const Panel panel = panelOf(board);
    if (!arguments.svg.empty())
        writeWhole(arguments.svg,
                   drawing::svgOf(panel.readings, panel.parts, drawing::Styled::Within),
                   arguments.isForced);
    if (!arguments.html.empty())
        writeWhole(arguments.html, drawing::pageOf(panel.readings, panel.parts, panel.description),
                   arguments.isForced);
    if (arguments.asJson)
        printJson(panelJson(panel));
    return true;
}

void definePanel(Command &command) {
    constexpr uint32_t kLeastMs = 100;
    constexpr uint32_t kMostMs = 3600000;
    constexpr double kMsPerSecond = 1000;
    const auto arguments = std::make_shared<PanelArguments>();
    addFolder(command, arguments->folder);
    command.flag("--watch", "Draw it again until stopped", arguments->isWatching);
    command.flag("--once", "Draw it once, as without --watch", arguments->isOnce)
        .notWith("--watch");
    command
        .option("--interval", "SECONDS", "Seconds between drawings, 0.1-3600",
                seconds(arguments->intervalMs, kLeastMs, kMostMs))
        .usually("1")
        .onlyWith("--watch");
    command
        .option("--svg", "FILE", "Save a picture of it instead, - is standard output",
                fileName(arguments->svg))
        .notWith("--watch");
    command
        .option("--html", "FILE", "Save a page that stands alone, - is standard output",
                fileName(arguments->html))
        .notWith("--watch")
        .notWith("--svg");
    command.flag("--json", "Print its parts and what is said of each", arguments->asJson)
        .notWith("--watch")
        .notWith("--svg")
        .notWith("--html");
    command.flag("--force", "Replace a file that exists already", arguments->isForced)
        .notWith("--watch")
        .notWith("--json");
    command.detail("With --watch it is drawn until Ctrl-C, exit code 0, or until the board is "
                   "gone, exit code 1.\n"
                   "A terminal is redrawn in place, and what it has no room for is left out at the "
                   "end.\n"
                   "Pictures and pages are of one moment; 'vboard serve' shows the board as it "
                   "lives.");
    command.example("vboard panel board")
        .example("vboard panel board --watch --interval 0.5")
        .example("vboard panel board --svg panel.svg");
    command.does([arguments] {
        if (!saved(*arguments))
            printPanel(arguments->folder, arguments->isWatching,
                       arguments->intervalMs / kMsPerSecond);
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
