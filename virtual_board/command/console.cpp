// `vboard console`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

void defineConsole(Command &command) {
    struct Arguments {
        std::string folder;
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    addJson(command, arguments->asJson);
    command.example("vboard console board").does([arguments] {
        showConsole(arguments->folder, arguments->asJson);
    });
}

} // namespace

void addConsole(Command &root) {
    root.command("console", "Show the speed of the console", defineConsole);
}

void showConsole(const std::string &folder, bool asJson) {
    const LockedBoard board(folder);
    const uint32_t speed = board->devices.console.speed;
    if (asJson)
        printJson(nlohmann::ordered_json{{"device", vb::kConsolePath}, {"speed", speed}});
    else
        std::printf("%s %u baud\n", vb::kConsolePath, speed);
}

} // namespace vboard
