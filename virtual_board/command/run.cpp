// `vboard run`: starts a program on a board.

#include "language/refused.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/shell.h"
#include "virtual_board/command/words.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace vboard {

namespace {

void putOnBoard(const std::string &folder, const char *program) {
    const Board board(folder);
    try {
        for (const VBoardVariable &variable : environmentOf(board, program))
            setenv(variable.name, variable.value, 1);
    } catch (const CallFailed &failure) {
        if (failure.status() == VBOARD_E_REFUSED)
            throw NotOnBoard(failure.what());
        throw;
    }
}

[[noreturn]] void runProgram(const std::string &folder, const std::vector<std::string> &program,
                             bool allowsHost) {
    if (allowsHost)
        setenv(VBOARD_ALLOW_HOST, "1", 1);
    putOnBoard(folder, program[0].c_str());
    std::vector<char *> words;
    words.reserve(program.size() + 1);
    for (const std::string &word : program)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    throw CannotStart("cannot start " + program[0] + ": " + std::strerror(errno));
}

/** What is missing on a command line of run, with the right one. */
std::string behindDashes(const std::string &folder, const std::vector<std::string> &program) {
    std::string line = "vboard run " + shellWord(folder) + " --";
    for (const std::string &word : program)
        line += " " + shellWord(word);
    return program.empty() ? "PROGRAM behind '--' is required: " + line + " PROGRAM [ARGUMENTS...]"
                           : "'--' is missing before the program: " + line;
}

void defineRun(Command &command) {
    struct Arguments {
        std::string folder;
        bool allowsHost = false;
        std::vector<std::string> program;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.flag("--allow-host",
                 "Also start programs that would be on the host: those that the board's library "
                 "cannot be loaded into",
                 arguments->allowsHost);
    command.takesProgram(
        [arguments](std::vector<std::string> words, const std::vector<std::string> &line) {
            const bool isBehindDashes = words.empty() && !line.empty();
            words.insert(words.end(), line.begin(), line.end());
            if (!isBehindDashes)
                throw language::Refused(behindDashes(arguments->folder, words));
            arguments->program = words;
        });
    command.detail(
        "It replaces vboard, so that its exit code and signals are its own.\n"
        "A program that the board's library cannot be loaded into would be on the host, and is "
        "refused: with exit code 125, or 'ENOEXEC' (for a script 'EACCES') where a program of the "
        "board starts it.\n"
        "These are statically linked programs, those of a machine or word size of which no library "
        "is beside this one, those that are not for the GNU C library, set-user-id and "
        "set-group-id "
        "programs, those with file capabilities, those that cannot be read, and scripts for them.");
    command.example("vboard run board -- iodbg show")
        .example("vboard run board -- sh -c 'cat /proc/cmdline'");
    command.does(
        [arguments] { runProgram(arguments->folder, arguments->program, arguments->allowsHost); });
}

} // namespace

void addRun(Command &root) {
    root.command("run",
                 "Run a program, and all that it starts, on a board: run DIR -- PROGRAM "
                 "[ARGUMENTS...]",
                 defineRun);
}

} // namespace vboard
