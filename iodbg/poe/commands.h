#pragma once
// The commands about the PoE controller and its ports.

#include "iodbg/core/command.h"

namespace iodbg {

void addPoeCommands(Command &root);

} // namespace iodbg
