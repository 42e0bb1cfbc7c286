#pragma once
// All that iodbg can be asked.

#include "command_line/line.h"
#include "iodbg/core/console.h"

namespace iodbg {

/** The tool; where a command line asks for answers for programs is stored. */
command_line::Tool makeTool(bool &isJson);

/** Carries out a program's line; what it throws becomes a message and an exit code. */
ExitCode carryOut(Console &console, int argc, const char *const *argv);

} // namespace iodbg
