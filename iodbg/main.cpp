// iodbg: the board's diagnostic command line.

#include "iodbg/commands.h"
#include "iodbg/core/command_line.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/poe/debug.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string>

namespace {

using namespace iodbg;

ExitCode runCommand(Console &console, int argc, const char *const *argv) {
    if (isPoeDebug(argc, argv))
        return runPoeDebug(console, argc, argv);
    Program program = {
        {"iodbg", "Reads and changes what is on the board: identity, EEPROMs, power supplies, "
                  "fans, temperature, clock, LEDs, watchdog, PoE, SFP modules, flash, upgrades, "
                  "boot settings, CPLD registers, I2C devices, GPIO lines, MDIO registers; "
                  "judges and watches the unit."},
        "'iodbg COMMAND --help' shows a command's options and examples.\n\n" +
            std::string(kExitCodeHelp),
        "iodbg " IODBG_VERSION,
        console.isJson()};
    program.root.isGroup = true;
    addCommands(program.root);
    const std::span words(argv, static_cast<size_t>(argc));
    return parseCommandLine(program, words.subspan(words.empty() ? 0 : 1))(console);
}

/** Runs a command; what it throws becomes a message and an exit code. */
ExitCode runReported(Console &console, int argc, const char *const *argv) {
    try {
        return runCommand(console, argc, argv);
    } catch (const Failure &failure) {
        return console.print(failure);
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
