// `vboard list`.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;

Json textOrNull(const char *text) {
    return *text != '\0' ? Json(text) : Json();
}

void print(const VBoardListed &board) {
    if (board.status != VBOARD_OK)
        std::printf("%s  %s\n", board.folder, board.problem);
    else
        std::printf("%s  %s  %s  %s\n", board.folder, board.model, board.time,
                    *board.users != '\0' ? board.users : "unused");
}

Json boardJson(const VBoardListed &board) {
    return {{"folder", board.folder},
            {"model", textOrNull(board.model)},
            {"time", textOrNull(board.time)},
            {"users", board.users},
            {"problem", textOrNull(board.problem)}};
}

void listBoards(const std::string &below, bool asJson) {
    const List<VBoardListed> boards([&](VBoardListed **list, uint32_t *count, VBoardError *error) {
        return vboardList(below.c_str(), list, count, error);
    });
    Json list = Json::array();
    for (const VBoardListed &board : boards) {
        if (asJson)
            list.push_back(boardJson(board));
        else
            print(board);
    }
    if (asJson)
        printJson(list);
}

void defineList(Command &command) {
    struct Arguments {
        std::string below = ".";
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    command.optionalArgument("FOLDER", "Where to look, with all folders below; the working folder",
                             {text(arguments->below), {{}, Offers::Files::Folders, nullptr}});
    addJson(command, arguments->asJson);
    command.detail(
        "Each line tells a board's folder, its model, its kind of time, and which processes "
        "have it in use, as far as they can be seen; or why it cannot be opened.");
    command.example("vboard list").example("vboard list /tmp --json");
    command.does([arguments] { listBoards(arguments->below, arguments->asJson); });
}

} // namespace

void addList(command_line::Command &root) {
    root.command("list", "List the boards below a folder", defineList);
}

} // namespace vboard
