#pragma once
// Commands that only read answer for a captured unit as they do for the one that they run on.

#include "iodbg/core/command.h"

namespace iodbg {

/** Gives a command the option "--from FILE". */
Command &takesCapturedUnit(Command &command);

} // namespace iodbg
