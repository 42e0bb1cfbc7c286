#pragma once
// The commands about registers, lines and buses.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addCpldCommands(const Command &root);
void addI2cCommands(const Command &root);
void addGpioCommands(const Command &root);
void addMdioCommands(const Command &root);

} // namespace iodbg
