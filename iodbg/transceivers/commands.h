#pragma once
// The commands about the SFP cages.

#include "iodbg/core/command.h"

namespace iodbg {

void addSfpCommands(Command &root);

} // namespace iodbg
