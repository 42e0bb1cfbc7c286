#pragma once
// The parts of the group "poe", one file for each.

#include "iodbg/core/command.h"

namespace iodbg {

void addPoeShowCommands(Command &poe);
void addPoeSetCommands(Command &poe);
void addPoePortActions(Command &poe);
void addPoeInitCommand(Command &poe);
void addPoeUpgradeCommand(Command &poe);

} // namespace iodbg
