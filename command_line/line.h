#pragma once
// The words of a command line, taken apart by the definitions of the commands.

#include "command_line/command.h"

#include <span>
#include <stdexcept>
#include <string>

namespace command_line {

/** A whole program: its commands, and what it says of itself. */
struct Tool {
    Command root; // has the program's name
    std::string footer, version;
    bool *isJson = nullptr; // of a tool whose commands can all answer for programs
};

/** Words that are no command line of the tool, and where to read what would be one. */
class WrongUsage : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** What the words ask for: what a command does, or the printing of help, version and the like. */
Action actionFor(Tool &tool, std::span<const char *const> words);

} // namespace command_line
