#pragma once
// The commands about the PoE controller and its ports.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addPoeCommands(const Command &root);

} // namespace iodbg
