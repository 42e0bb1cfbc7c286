// iodbg: the board's diagnostic command line.

#include "iodbg/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/poe/debug.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string>

namespace {

using namespace iodbg;
using namespace command_line;

ExitCode runCommand(Console &console, int argc, const char *const *argv) {
    if (isPoeDebug(argc, argv))
        return runPoeDebug(console, argc, argv);
    Tool tool = makeTool(console.isJson());
    const std::span words(argv, static_cast<size_t>(argc));
    const Action action = actionFor(tool, words.subspan(words.empty() ? 0 : 1));
    return static_cast<ExitCode>(action(console));
}

/** Runs a command; what it throws becomes a message and an exit code. */
ExitCode runReported(Console &console, int argc, const char *const *argv) {
    try {
        return runCommand(console, argc, argv);
    } catch (const Failure &failure) {
        return console.print(failure);
    } catch (const WrongUsage &mistake) {
        return console.print(Failure::usage(mistake.what()));
    } catch (const std::exception &exception) {
        return console.print(Failure(ExitCode::Host, exception.what()));
    }
}

} // namespace

int main(int argc, char **argv) {
    Console console;
    try {
        return static_cast<int>(runReported(console, argc, argv));
    } catch (const std::exception &exception) { // standard output takes nothing at all
        std::fprintf(stderr, "iodbg: %s\n", exception.what());
        return static_cast<int>(ExitCode::Host);
    }
}
