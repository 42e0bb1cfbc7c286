#pragma once
// The commands about the unit as a whole.

#include "iodbg/core/command.h"

namespace iodbg {

void addShowCommand(Command &root);
void addCheckCommand(Command &root);
void addCaptureCommand(Command &root);
void addDiffCommand(Command &root);
void addWatchCommand(Command &root);
void addMetricsCommand(Command &root);
void addInitCommand(Command &root);

} // namespace iodbg
