// `vboard delete`.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

void defineDelete(Command &command) {
    const auto folder = std::make_shared<std::string>();
    addFolder(command, *folder);
    command.detail("Nothing is removed where something in the folder is not of the board, or where "
                   "programs have it in use.");
    command.example("vboard delete board");
    command.does([folder] {
        call([&](VBoardError *error) { return vboardDelete(folder->c_str(), error); });
    });
}

} // namespace

void addDelete(command_line::Command &root) {
    root.command("delete", "Remove a board with its folder", defineDelete);
}

} // namespace vboard
