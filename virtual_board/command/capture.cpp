// `vboard capture`.

#include "language/refused.h"
#include "virtual_board/command/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/tried_board.h"
#include "virtual_board/command/words.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

/** A process's environment with the variables that put it on a board. */
class BoardEnvironment {
  public:
    BoardEnvironment(const Board &board, const std::string &program)
        : variables_(environmentOf(board, program.c_str())) {
        for (const VBoardVariable &variable : variables_)
            texts_.push_back(std::string(variable.name) + "=" + variable.value);
        for (char **own = environ; *own != nullptr; ++own) {
            if (!isReplaced(*own))
                words_.push_back(*own);
        }
        for (std::string &text : texts_)
            words_.push_back(text.data());
        words_.push_back(nullptr);
    }

    char *const *words() const { return words_.data(); }

  private:
    bool isReplaced(const char *word) const {
        for (const std::string &text : texts_) {
            if (std::strncmp(word, text.c_str(), text.find('=') + 1) == 0)
                return true;
        }
        return false;
    }

    Environment variables_;
    std::vector<std::string> texts_;
    std::vector<char *> words_;
};

/** Runs a program on a board, with this one's streams. */
void runOn(const Board &board, std::vector<std::string> line) {
    const BoardEnvironment environment(board, line[0]);
    std::vector<char *> words;
    words.reserve(line.size() + 1);
    for (std::string &word : line)
        words.push_back(word.data());
    words.push_back(nullptr);
    pid_t child = -1;
    const int reason =
        posix_spawn(&child, words[0], nullptr, nullptr, words.data(), environment.words());
    if (reason != 0)
        throw CannotStart("cannot start " + line[0] + ": " + std::strerror(reason));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw language::Refused("the board was not captured: " + line[0] + " ended with " +
                                (WIFEXITED(status) ? std::to_string(WEXITSTATUS(status))
                                                   : "signal " + std::to_string(WTERMSIG(status))));
}

/** Before a board is copied for it. */
void requireFolderOf(const std::string &file) {
    const fs::path folder = fs::path(file).parent_path();
    if (!folder.empty() && !fs::exists(folder))
        throw language::Refused("cannot write " + file + ": " + std::strerror(ENOENT));
}

void captureBoard(const CaptureArguments &arguments) {
    requireFolderOf(arguments.file);
    const std::string iodbg = findIodbg();
    const TriedBoard copy(arguments.folder);
    const VBoardChange time = {"time", "virtual"};
    call([&](VBoardError *error) { return vboardSet(copy.get(), &time, 1, error); });
    std::vector<std::string> line = {iodbg, "capture"};
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
    runOn(copy.get(), std::move(line));
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
