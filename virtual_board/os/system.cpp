// Commands that programs run through the shell. The tools that work on flash and console are the
// board's own: their folder comes first in the command's search path.

#include "virtual_board/os/program_start.h"
#include "virtual_board/os/seam.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

namespace {

constexpr int kNoCommand = 127 << 8; // what system answers when the shell finds no command

char *append(char *end, const char *text) {
    return stpcpy(end, text);
}

/** Appends text to a command line in single quotes. */
char *quote(char *end, const char *text) {
    *end++ = '\'';
    for (; *text != '\0'; ++text) {
        if (*text == '\'')
            end = append(end, "'\\''");
        else
            *end++ = *text;
    }
    return append(end, "'");
}

/** The command line behind the settings that lead its programs to the board; the caller frees it.
 */
char *boardCommand(const char *command, const char *tools, const char *board) {
    constexpr size_t kMostPerCharacter = 4; // a quoted quote
    constexpr size_t kWords = 64;
    const size_t quoted = kMostPerCharacter * (std::strlen(tools) + std::strlen(board));
    auto *line = static_cast<char *>(std::malloc(kWords + quoted + std::strlen(command)));
    if (line == nullptr)
        return nullptr;
    char *end = quote(append(line, "export PATH="), tools);
    end = quote(append(end, "${PATH:+:$PATH} VBOARD_DIR="), board);
    append(append(end, "; "), command);
    return line;
}

#ifdef VBOARD_SHELL_IS_FOREIGN
/**
 * Keeps the libraries to preload from the shell: that of the machine of a cross build is of another
 * kind and complains of them. The board's tools do not need them.
 */
class WithoutPreload {
  public:
    WithoutPreload() {
        if (const char *value = std::getenv(kPreload); value != nullptr) {
            saved_ = strdup(value);
            unsetenv(kPreload);
        }
    }
    WithoutPreload(const WithoutPreload &) = delete;
    WithoutPreload &operator=(const WithoutPreload &) = delete;
    ~WithoutPreload() {
        if (saved_ != nullptr)
            setenv(kPreload, saved_, 1);
        std::free(saved_);
    }

  private:
    static constexpr char kPreload[] = "LD_PRELOAD";
    char *saved_ = nullptr;
};
#endif

} // namespace

VB_SEAM(int, system, const char *command) {
    const vb::BoardFolder *folder = vb::attachedFolder();
    if (folder == nullptr || command == nullptr)
        return VB_NEXT(system)(command);
    vb::HostPathBuffer tools;
    if (!vb::findTools(tools)) {
        std::fputs("vboard: the board's tools are not beside its library; install them again\n",
                   stderr);
        return kNoCommand;
    }
    if (!vb::putShellOnBoard())
        return kNoCommand;
    char *line = boardCommand(command, tools.text, folder->path());
    if (line == nullptr)
        return -1;
    const vb::Devices &devices = folder->board()->devices;
    const uint32_t powerCuts = devices.powerCuts;
#ifdef VBOARD_SHELL_IS_FOREIGN
    const WithoutPreload withoutPreload;
#endif
    const int status = VB_NEXT(system)(line);
    std::free(line);
    // A command that lost its power was not alone in that.
    if (devices.powerCuts != powerCuts)
        vb::cutPower();
    return status;
}
