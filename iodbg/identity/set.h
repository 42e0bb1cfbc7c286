#pragma once

#include "iodbg/core/command.h"
#include "iodbg/identity/record.h"

namespace iodbg {

/** Adds the commands that change what the board knows of itself. */
void addIdentitySetCommands(Command &identity);

/** Stores a whole record and reads it back, or only shows what that would change. */
ExitCode storeRecord(Console &console, const Carrier &carrier, const BspDevinfo &wanted,
                     bool isDryRun);

} // namespace iodbg
