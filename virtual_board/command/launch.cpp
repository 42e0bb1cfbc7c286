// `vboard run` and `vboard env`: programs on a board, what they need in their environment, and
// starting them with it.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/programs/environment.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/programs/search_path.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vboard {

namespace {

/** How `vboard env` prints: line by line, as a shell's command, as arguments of the emulator. */
enum class EnvironmentForm { Lines, Shell, Qemu };

constexpr char kSeparators[] = ": \t\n"; // of a list of libraries to preload

/** The library that connects programs to boards: beside this program, as built or as installed. */
std::string findLibrary() {
    std::error_code failure;
    const fs::path programs = fs::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char *libraries : {"..", VBOARD_LIBRARIES_FROM_PROGRAMS}) {
        const fs::path library = (programs / libraries / vb::kSeamLibrary).lexically_normal();
        if (fs::exists(library, failure))
            return library.string();
    }
    throw vb::Refused(std::string(vb::kSeamLibrary) + " is not where it belongs, in " +
                      (programs / VBOARD_LIBRARIES_FROM_PROGRAMS).lexically_normal().string() +
                      "; install it again");
}

/** The library, if it can be preloaded. */
std::string findPreloadable() {
    std::string library = findLibrary();
    if (library.find_first_of(kSeparators) != std::string::npos)
        throw vb::Refused(library + " cannot be preloaded: a path with a colon or a blank in it "
                                    "would be taken for two; install vboard elsewhere");
    return library;
}

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

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

/** The libraries to preload into a program, which is refused when it would not be on the board. */
std::string preloadList(const vb::ProgramFile &program, const std::string &name) {
    const std::string library = findPreloadable();
    const vb::PreloadList list(program, library.c_str(), std::getenv(vb::kPreloadVariable),
                               vb::PreloadList::Seam::Own);
    if (vb::isUnfit(list.fitness()) && !isSet(vb::kAllowHostVariable)) {
        const vb::Refusal refusal =
            vb::refusalOf(list.fitness(), program.interpreter, name.c_str());
        std::string reason;
        for (const char *part : refusal.parts)
            reason += part;
        throw NotOnBoard(reason);
    }
    std::string text(list.size(), '\0');
    text.resize(static_cast<size_t>(list.write(text.data()) - text.data()));
    return text;
}

struct Variable {
    const char *name;
    std::string value;
};

/** The board is looked at first: it must be usable. */
std::string absoluteFolder(const std::string &folder) {
    vb::BoardFolder board;
    openBoard(board, folder);
    return board.path();
}

/** A word as the shell takes it, whatever it has in it. */
std::string shellQuoted(const std::string &word) {
    std::string text = "'";
    for (const char character : word)
        text += character == '\'' ? "'\\''" : std::string(1, character);
    return text + "'";
}

/** The same, in quotes only where it needs them. */
std::string shellWord(const std::string &word) {
    constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                              "%+,-./:=@_";
    const bool isPlain = !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
    return isPlain ? word : shellQuoted(word);
}

/** A setting of the shell's, of any value. */
std::string shellSetting(const Variable &variable) {
    return std::string(variable.name) + "=" + shellQuoted(variable.value);
}

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

void printEnvironment(const std::string &folder, EnvironmentForm form) {
    const Variable variables[] = {{vb::kFolderVariable, absoluteFolder(folder)},
                                  {vb::kPreloadVariable, preloadList({}, "")}};
    std::string line;
    for (const Variable &variable : variables) {
        const std::string setting = std::string(variable.name) + "=" + variable.value;
        // The emulator splits at commas, the shell at blanks.
        if (form == EnvironmentForm::Qemu && setting.find_first_of(", \t\n") != std::string::npos)
            throw vb::Refused("'" + setting +
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
        .example("qemu-mips -L /usr/mips-linux-gnu $(vboard env --qemu board) ./iodbg show");
    command.does([arguments] {
        printEnvironment(arguments->folder, arguments->forShell  ? EnvironmentForm::Shell
                                            : arguments->forQemu ? EnvironmentForm::Qemu
                                                                 : EnvironmentForm::Lines);
    });
}

} // namespace

void addRun(Command &root) {
    root.command("run",
                 "Run a program, and all that it starts, on a board: run DIR -- PROGRAM "
                 "[ARGUMENTS...]",
                 defineRun);
}

void addEnv(Command &root) {
    root.command("env",
                 "Print the environment of a program on a board, for launchers that 'vboard run' "
                 "cannot start",
                 defineEnv);
}

} // namespace vboard
