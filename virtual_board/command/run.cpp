// `vboard run`: starts a program on a board.

#include "language/refused.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/preloading.h"
#include "virtual_board/command/shell.h"
#include "virtual_board/command/words.h"
#include "virtual_board/programs/environment.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/programs/search_path.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vboard {

namespace {

#ifdef VBOARD_SHELL_IS_FOREIGN
/** What the emulator's host makes of a program is none of this program's business. */
vb::ProgramFile examine(const std::string &) {
    return {};
}
#else
/** Looks at the program that a name stands for. */
vb::ProgramFile examine(const std::string &name) {
    const vb::SearchPath places(name.c_str());
    std::string path(places.size(), '\0');
    const auto isProgram = [](const char *place) { return vb::isExecutable(AT_FDCWD, place); };
    return places.find(path.data(), isProgram) ? vb::examineProgram(AT_FDCWD, path.c_str())
                                               : vb::ProgramFile{};
}
#endif

[[noreturn]] void runProgram(const std::string &folder, const std::vector<std::string> &program,
                             bool allowsHost) {
    setenv(vb::kFolderVariable, absoluteFolder(folder).c_str(), 1);
    if (allowsHost)
        setenv(vb::kAllowHostVariable, "1", 1);
    // Shells of the board find the tools that work on it, as programs do that run commands.
    const char *path = std::getenv("PATH");
    const fs::path tools = fs::path(findLibrary()).parent_path() / vb::kToolFolder;
    const std::string folders = path != nullptr ? path : vb::kUsualFolders;
    setenv("PATH", (tools.string() + ":" + folders).c_str(), 1);
    setenv(vb::kPreloadVariable, preloadList(examine(program[0]), program[0]).c_str(), 1);
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
