#pragma once
// The commands about the library itself.

#include "iodbg/core/command.h"

namespace iodbg {

void addStatusCommand(Command &root);

} // namespace iodbg
