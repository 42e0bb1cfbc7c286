#pragma once
// The commands about the library itself.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addStatusCommand(const Command &root);

} // namespace iodbg
