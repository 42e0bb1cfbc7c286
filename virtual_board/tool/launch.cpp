// Programs on a board: what they need in their environment, and starting them with it.

#include "virtual_board/tool/commands.h"
#include "virtual_board/tool/open_board.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vboard {

namespace {

constexpr char kLibrary[] = "libvboard.so";
constexpr char kSeparators[] = ": \t\n"; // of a list of libraries to preload

/** The library that connects programs to boards: beside this program, as built or as installed. */
std::string findLibrary() {
    std::error_code failure;
    const fs::path programs = fs::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char *libraries : {"..", VBOARD_LIBRARIES_FROM_PROGRAMS}) {
        const fs::path library = (programs / libraries / kLibrary).lexically_normal();
        if (fs::exists(library, failure))
            return library.string();
    }
    throw vb::Refused(std::string(kLibrary) + " is not where it belongs, in " +
                      (programs / VBOARD_LIBRARIES_FROM_PROGRAMS).lexically_normal().string() +
                      "; install it again");
}

/** The libraries to preload: the board's before what the environment asks for already. */
std::string preloadList() {
    const std::string library = findLibrary();
    if (library.find_first_of(kSeparators) != std::string::npos)
        throw vb::Refused(library + " cannot be preloaded: a path with a colon or a blank in it "
                                    "would be taken for two; install vboard elsewhere");
    const char *others = std::getenv("LD_PRELOAD");
    return others == nullptr || *others == '\0' ? library : library + ":" + others;
}

struct Variable {
    const char *name;
    std::string value;
};

/** What a program needs in its environment. The board is looked at first: it must be usable. */
std::vector<Variable> boardVariables(const std::string &folder) {
    vb::BoardFolder board;
    openBoard(board, folder);
    return {{"VBOARD_DIR", board.path()}, {"LD_PRELOAD", preloadList()}};
}

} // namespace

void runProgram(const std::string &folder, const std::vector<std::string> &program) {
    for (const Variable &variable : boardVariables(folder))
        setenv(variable.name, variable.value.c_str(), 1);
    // Shells of the board find the tools that work on it, as programs do that run commands.
    const char *path = std::getenv("PATH");
    const fs::path tools = fs::path(findLibrary()).parent_path() / vb::kToolFolder;
    setenv("PATH", (tools.string() + (path != nullptr ? ":" + std::string(path) : "")).c_str(), 1);
    std::vector<char *> words;
    words.reserve(program.size() + 1);
    for (const std::string &word : program)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    throw CannotStart("cannot start " + program[0] + ": " + std::strerror(errno));
}

void printEnvironment(const std::string &folder, bool forQemu) {
    std::string line;
    for (const Variable &variable : boardVariables(folder)) {
        const std::string setting = std::string(variable.name) + "=" + variable.value;
        // The emulator splits at commas, the shell at blanks.
        if (forQemu && setting.find_first_of(", \t\n") != std::string::npos)
            throw vb::Refused("'" + setting +
                              "' cannot be an argument of qemu: it has a comma or "
                              "a blank in it; move the folder");
        if (forQemu)
            line += (line.empty() ? "-E " : " -E ") + setting;
        else
            std::printf("%s\n", setting.c_str());
    }
    if (forQemu)
        std::printf("%s\n", line.c_str());
}

} // namespace vboard
