// The command line of `vboard`.

#include "command_line/line.h"
#include "virtual_board/command/commands.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string>

// Tells a preloaded library to stay off: hands that work on a board are not on it, and would wait
// for themselves at its lock.
extern "C" __attribute__((visibility("default"))) const char vboardSeamOfProgram;
const char vboardSeamOfProgram = 1;

namespace {

using namespace command_line;

enum ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kCannotStart = 3, kNotOnBoard = 125 };

constexpr char kFooter[] =
    "'vboard COMMAND --help' shows a command's options and examples.\n\n"
    "Exit codes:\n"
    "  0  done\n"
    "  1  refused: the board or a value is not usable; nothing changed\n"
    "  2  the command line is wrong\n"
    "  3  the program of 'vboard run' cannot be started\n"
    "'vboard run' otherwise ends with the program's own exit code; 125 is "
    "a program\nthat cannot be on its board: it is refused rather than run on the host.\n";

class StandardOutput : public Output {
  public:
    void printText(const std::string &text) const override { std::fputs(text.c_str(), stdout); }
};

void addCommands(Command &root) {
    root.isGroup = true;
    vboard::addCreate(root);
    vboard::addListModels(root);
    vboard::addRun(root);
    vboard::addEnv(root);
    vboard::addGet(root);
    vboard::addSet(root);
    vboard::addProperties(root);
    vboard::addFault(root);
    vboard::addPanel(root);
    vboard::addFlash(root);
    vboard::addConsole(root);
    vboard::addTrace(root);
}

int fail(ExitCode code, const std::string &reason) {
    std::fflush(stdout);
    std::fprintf(stderr, "vboard: %s\n", reason.c_str());
    return code;
}

int carryOut(std::span<const char *const> words) {
    Tool tool = {{"vboard",
                  "A whole switch in software: makes virtual boards, runs programs on them, and "
                  "shows and changes what they hold.",
                  addCommands},
                 kFooter,
                 "vboard " VBOARD_VERSION};
    StandardOutput output;
    try {
        actionFor(tool, words)(output);
    } catch (const WrongUsage &mistake) {
        return fail(kUsage, mistake.what());
    } catch (const vboard::NotOnBoard &refusal) {
        return fail(kNotOnBoard, refusal.what());
    } catch (const vboard::CannotStart &failure) {
        return fail(kCannotStart, failure.what());
    } catch (const std::exception &refusal) {
        return fail(kRefused, refusal.what());
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return fail(kRefused, "cannot write the output");
    return kDone;
}

} // namespace

int main(int argc, char **argv) {
    try {
        const std::span words(argv, static_cast<size_t>(argc));
        return carryOut(words.subspan(words.empty() ? 0 : 1));
    } catch (...) {
        std::fputs("vboard: out of memory\n", stderr);
        return kRefused;
    }
}
