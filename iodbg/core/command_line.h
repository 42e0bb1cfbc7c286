#pragma once
// The words of the command line, taken apart by the definitions of the commands.

#include "iodbg/core/command.h"

#include <span>
#include <string>

namespace iodbg {

/** What the whole program says of itself. */
struct Program {
    Command root;
    std::string footer; // of its help
    std::string version;
    bool &isJson; // whether the answer is for programs, which every command takes an option for
};

/** Takes the words apart; what the chosen command does, or the printing of help or version. */
Action parseCommandLine(Program &program, std::span<const char *const> words);

} // namespace iodbg
