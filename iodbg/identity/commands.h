#pragma once
// The commands about what the board says of itself.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addIdentityCommands(const Command &root);
void addEepromCommands(const Command &root);

} // namespace iodbg
