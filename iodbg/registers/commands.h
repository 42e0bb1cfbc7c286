#pragma once
// The commands about registers, lines and buses.

#include "iodbg/core/command.h"

namespace iodbg {

void addCpldCommands(Command &root);
void addI2cCommands(Command &root);
void addGpioCommands(Command &root);
void addMdioCommands(Command &root);

} // namespace iodbg
