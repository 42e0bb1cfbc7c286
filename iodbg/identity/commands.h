#pragma once
// The commands about what the board says of itself.

#include "iodbg/core/command.h"

namespace iodbg {

void addIdentityCommands(Command &root);
void addEepromCommands(Command &root);

} // namespace iodbg
