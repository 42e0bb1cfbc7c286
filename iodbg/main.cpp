// iodbg: the board's diagnostic command line.

#include "iodbg/commands.h"
#include "iodbg/core/console.h"

#include <cstdio>
#include <exception>

using namespace iodbg;

int main(int argc, char **argv) {
    Console console;
    try {
        return static_cast<int>(carryOut(console, argc, argv));
    } catch (const std::exception &exception) { // standard output takes nothing at all
        std::fprintf(stderr, "iodbg: %s\n", exception.what());
        return static_cast<int>(ExitCode::Host);
    }
}
