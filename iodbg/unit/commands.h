#pragma once
// The commands about the unit as a whole.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addShowCommand(const Command &root);
void addCheckCommand(const Command &root);
void addWatchCommand(const Command &root);
void addInitCommand(const Command &root);

} // namespace iodbg
