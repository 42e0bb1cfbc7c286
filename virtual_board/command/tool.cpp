#include "virtual_board/command/tool.h"

#include "virtual_board/command/commands.h"

namespace vboard {

namespace {

constexpr char kFooter[] =
    "'vboard COMMAND --help' shows a command's options and examples.\n\n"
    "Exit codes:\n"
    "  0  done\n"
    "  1  refused: the board or a value is not usable; nothing changed\n"
    "  2  the command line is wrong\n"
    "  3  the program of 'vboard run' cannot be started\n"
    "  4  a program of a stepped board does not wait, and the clock stands\n"
    "  5  'vboard play': something was not as the scenario expects;\n"
    "     'vboard replay': an answer differs from the recorded one\n"
    "'vboard run' otherwise ends with the program's own exit code; 125 is "
    "a program\nthat cannot be on its board: it is refused rather than run on the host.\n";

void addCommands(command_line::Command &root) {
    root.isGroup = true;
    addCreate(root);
    addCopy(root);
    addCapture(root);
    addDelete(root);
    addUpgrade(root);
    addList(root);
    addListModels(root);
    addRun(root);
    addEnv(root);
    addGet(root);
    addSet(root);
    addProperties(root);
    addFault(root);
    addPanel(root);
    addServe(root);
    addFlash(root);
    addConsole(root);
    addTrace(root);
    addReplay(root);
    addPlay(root);
    addAdvance(root);
}

} // namespace

command_line::Tool makeTool() {
    return {{"vboard",
             "A whole switch in software: makes virtual boards, runs programs on them, and shows "
             "and changes what they hold.",
             addCommands},
            kFooter,
            "vboard " VBOARD_VERSION};
}

} // namespace vboard
