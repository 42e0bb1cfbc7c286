#pragma once
// All that iodbg can be asked.

#include "command_line/line.h"

namespace iodbg {

/** The tool; where a command line asks for answers for programs is stored. */
command_line::Tool makeTool(bool &isJson);

} // namespace iodbg
