#pragma once
// The command that shows what a program sends to the board.

#include "iodbg/core/command.h"

namespace iodbg {

void addTraceCommand(Command &root);

} // namespace iodbg
