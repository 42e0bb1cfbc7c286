// `vboard env`: prints what would put a program on a board.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/shell.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

/** How `vboard env` prints: line by line, as a shell's command, as arguments of the emulator. */
enum class EnvironmentForm { Lines, Shell, Qemu };

/** A setting of the shell's, of any value. */
std::string shellSetting(const VBoardVariable &variable) {
    return std::string(variable.name) + "=" + shellQuoted(variable.value);
}

void printEnvironment(const std::string &folder, EnvironmentForm form) {
    const Board board(folder);
    const Environment variables = environmentOf(board, nullptr);
    std::string line;
    for (const VBoardVariable &variable : variables) {
        if (isSearchPath(variable))
            continue; // the launcher's own is not this one's
        const std::string setting = std::string(variable.name) + "=" + variable.value;
        // The emulator splits at commas, the shell at blanks.
        if (form == EnvironmentForm::Qemu && setting.find_first_of(", \t\n") != std::string::npos)
            throw language::Refused("'" + setting +
                                    "' cannot be an argument of qemu: it has a comma or "
                                    "a blank in it; move the folder");
        switch (form) {
        case EnvironmentForm::Lines:
            line += setting + "\n";
            break;
        case EnvironmentForm::Shell:
            line += (line.empty() ? "export " : " ") + shellSetting(variable);
            break;
        case EnvironmentForm::Qemu:
            line += (line.empty() ? "-E " : " -E ") + setting;
            break;
        }
    }
    std::printf("%s%s", line.c_str(), form == EnvironmentForm::Lines ? "" : "\n");
}

void defineEnv(Command &command) {
    struct Arguments {
        std::string folder;
        bool forQemu = false;
        bool forShell = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.flag("--qemu", "Print arguments for qemu's user emulation", arguments->forQemu);
    command
        .flag("--shell", "Print a command for 'eval', which puts a shell's programs on the board",
              arguments->forShell)
        .notWith("--qemu");
    command.example("env $(vboard env board) iodbg show")
        .example("eval \"$(vboard env --shell board)\"")
        .example("qemu-mips-static -L /usr/mips-linux-gnu $(vboard env --qemu board) ./iodbg show");
    command.does([arguments] {
        printEnvironment(arguments->folder, arguments->forShell  ? EnvironmentForm::Shell
                                            : arguments->forQemu ? EnvironmentForm::Qemu
                                                                 : EnvironmentForm::Lines);
    });
}

} // namespace

void addEnv(Command &root) {
    root.command("env",
                 "Print the environment of a program on a board, for launchers that 'vboard run' "
                 "cannot start",
                 defineEnv);
}

} // namespace vboard
