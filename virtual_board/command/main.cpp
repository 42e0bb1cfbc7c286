// `vboard`: what its commands end with.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/tool.h"

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

enum ExitCode {
    kDone = 0,
    kRefused = 1,
    kUsage = 2,
    kCannotStart = 3,
    kBusy = 4,
    kNotAsExpected = 5,
    kNotOnBoard = 125
};

class StandardOutput : public Output {
  public:
    void printText(const std::string &text) const override { std::fputs(text.c_str(), stdout); }
};

int fail(ExitCode code, const std::string &reason) {
    std::fflush(stdout);
    std::fprintf(stderr, "vboard: %s\n", reason.c_str());
    return code;
}

int carryOut(std::span<const char *const> words) {
    Tool tool = vboard::makeTool();
    StandardOutput output;
    try {
        actionFor(tool, words)(output);
    } catch (const WrongUsage &mistake) {
        return fail(kUsage, mistake.what());
    } catch (const vboard::NotOnBoard &refusal) {
        return fail(kNotOnBoard, refusal.what());
    } catch (const vboard::CannotStart &failure) {
        return fail(kCannotStart, failure.what());
    } catch (const vboard::ExpectationFailed &failure) {
        return fail(kNotAsExpected, failure.what());
    } catch (const vboard::CallFailed &failure) {
        return fail(failure.status() == VBOARD_E_BUSY ? kBusy : kRefused, failure.what());
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
