// `vboard copy`.

#include "command_line/blocked_signals.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

void defineCopy(Command &command) {
    struct Arguments {
        std::string folder, copy;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.argument("COPY", "The copy's folder, which is not there yet, or is empty",
                     {text(arguments->copy), {{}, Offers::Files::Folders, nullptr}});
    command.detail(
        "The copy has all that the board has at one moment: state, flash, files and trace. "
        "Programs may be on the board; on the copy there are none.");
    command.example("vboard copy board twin");
    command.does([arguments] {
        const command_line::BlockedSignals whole(command_line::kEndingSignals);
        call([&](VBoardError *error) {
            return vboardCopy(arguments->folder.c_str(), arguments->copy.c_str(), error);
        });
    });
}

} // namespace

void addCopy(command_line::Command &root) {
    root.command("copy", "Make a copy of a board", defineCopy);
}

} // namespace vboard
