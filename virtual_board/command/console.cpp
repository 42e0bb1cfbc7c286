// `vboard console`.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
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
    constexpr char kDevice[] = "/dev/ttyS0";
    const Board board(folder);
    const std::string speed = board.properties({"console.speed"}).begin()->json;
    if (asJson)
        printJson(nlohmann::ordered_json{{"device", kDevice},
                                         {"speed", nlohmann::ordered_json::parse(speed)}});
    else
        std::printf("%s %s baud\n", kDevice, speed.c_str());
}

} // namespace vboard
