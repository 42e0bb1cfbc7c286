#pragma once

#include "iodbg/core/command_line.h"

namespace iodbg {

/** Adds the commands that change what the board knows of itself. */
void addIdentitySetCommands(const Command &identity);

} // namespace iodbg
