// `vboard capture`.

#include "command_line/programs.h"
#include "language/refused.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/tried_board.h"
#include "virtual_board/command/words.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace vboard {

namespace {

struct CaptureArguments {
    std::string folder, file;
    bool hasSecrets = false, hasFlash = false, isAnonymous = false, isForced = false;
};

/** iodbg: of the same installation, or one that PATH leads to. */
std::string findIodbg() {
    std::error_code failure;
    const fs::path own = fs::read_symlink("/proc/self/exe", failure).parent_path() / "iodbg";
    if (access(own.c_str(), X_OK) == 0)
        return own.string();
    std::string found = findInPath("iodbg");
    if (found.empty())
        throw CannotStart("iodbg, which captures units, is neither beside vboard nor in one of the "
                          "folders of PATH; install it");
    return found;
}

/** Runs a program on a board, with this one's streams; what waitpid tells of it. */
int runOn(command_line::ProgramRunner &programs, const Board &board,
          const std::vector<std::string> &line) {
    std::vector<std::string> variables;
    for (const VBoardVariable &variable : environmentOf(board, line[0].c_str()))
        variables.push_back(std::string(variable.name) + "=" + variable.value);
    try {
        return programs.run({line, variables, STDOUT_FILENO, STDERR_FILENO});
    } catch (const std::system_error &failure) {
        throw CannotStart("cannot start " + line[0] + ": " + failure.code().message());
    }
}

/** Before a board is copied for it. */
void requireFolderOf(const std::string &file) {
    const fs::path folder = fs::path(file).parent_path();
    if (!folder.empty() && !fs::exists(folder))
        throw language::Refused("cannot write " + file + ": " + std::strerror(ENOENT));
}

/** What there is on a board stands for what is on the host. */
void requireHostFile(const std::string &file) {
    std::error_code failure;
    const fs::path path = fs::weakly_canonical(file, failure);
    if (path.string().starts_with("/tmp/bsp/"))
        throw language::Refused(file + " would be on the board, where /tmp/bsp is the board's "
                                       "own; choose another folder");
}

std::vector<std::string> lineFor(const CaptureArguments &arguments) {
    std::vector<std::string> line = {findIodbg(), "capture"};
    const std::pair<bool, const char *> options[] = {{arguments.hasSecrets, "--with-secrets"},
                                                     {arguments.hasFlash, "--with-flash"},
                                                     {arguments.isAnonymous, "--anonymous"},
                                                     {arguments.isForced, "--force"}};
    for (const auto &[isGiven, word] : options) {
        if (isGiven)
            line.emplace_back(word);
    }
    line.emplace_back("--");
    line.push_back(arguments.file);
    return line;
}

/** What waitpid tells of iodbg, once the copy is gone that it was on. */
int captureCopy(const CaptureArguments &arguments) {
    const std::vector<std::string> line = lineFor(arguments);
    command_line::ProgramRunner programs; // signals end iodbg, and this when all is in order
    const TriedBoard copy(arguments.folder);
    const VBoardChange time = {"time", "virtual"};
    call([&](VBoardError *error) { return vboardSet(copy.get(), &time, 1, error); });
    return runOn(programs, copy.get(), line);
}

void captureBoard(const CaptureArguments &arguments) {
    requireHostFile(arguments.file);
    requireFolderOf(arguments.file);
    const int status = captureCopy(arguments);
    if (WIFSIGNALED(status))
        command_line::endAs(status);
    if (WEXITSTATUS(status) != 0)
        throw language::Refused("the board was not captured: iodbg ended with " +
                                std::to_string(WEXITSTATUS(status)));
}

void defineCapture(Command &command) {
    const auto arguments = std::make_shared<CaptureArguments>();
    addFolder(command, arguments->folder);
    command.argument("FILE", "The document, - is standard output",
                     {text(arguments->file), {{}, Offers::Files::All, nullptr}});
    command.flag("--with-secrets", "Passwords, and the boot settings as they lie in flash",
                 arguments->hasSecrets);
    command.flag("--with-flash", "The content of the flash partitions", arguments->hasFlash);
    command.flag("--anonymous", "Other serial numbers and MAC addresses, with right checksums",
                 arguments->isAnonymous);
    command.flag("--force", "Replace a file that exists already", arguments->isForced);
    command.detail("It is what 'iodbg capture' saves of a unit, made on a copy of the board on "
                   "virtual time: the board's clock and trace, and what its fault rules have "
                   "counted, stay as they are. iodbg is that beside vboard, or in PATH.\n"
                   "The file is readable by its owner alone.");
    command.example("vboard capture board unit.json").example("vboard capture board - --anonymous");
    command.does([arguments] { captureBoard(*arguments); });
}

} // namespace

void addCapture(command_line::Command &root) {
    root.command("capture", "Save all that can be read of a board in one file", defineCapture);
}

} // namespace vboard
