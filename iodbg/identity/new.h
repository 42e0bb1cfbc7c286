#pragma once

#include "iodbg/core/command.h"

namespace iodbg {

/** Adds the command that makes a record for a unit without one. */
void addIdentityNewCommand(Command &identity);

} // namespace iodbg
