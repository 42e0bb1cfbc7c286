// `vboard upgrade`.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

void defineUpgrade(Command &command) {
    const auto folder = std::make_shared<std::string>();
    addFolder(command, *folder);
    command.detail("The board keeps all that it has. Where that cannot be done it stays as it was, "
                   "for the vboard that made it; so it does while programs have it in use. A board "
                   "of this version is left alone.");
    command.example("vboard upgrade board");
    command.does([folder] {
        call([&](VBoardError *error) { return vboardUpgrade(folder->c_str(), error); });
    });
}

} // namespace

void addUpgrade(command_line::Command &root) {
    root.command("upgrade", "Make a board of an earlier version one of this version",
                 defineUpgrade);
}

} // namespace vboard
