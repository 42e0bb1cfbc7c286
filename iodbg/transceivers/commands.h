#pragma once
// The commands about the SFP cages.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addSfpCommands(const Command &root);

} // namespace iodbg
