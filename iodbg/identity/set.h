#pragma once

#include "iodbg/core/command.h"

namespace iodbg {

/** Adds the commands that change what the board knows of itself. */
void addIdentitySetCommands(Command &identity);

} // namespace iodbg
