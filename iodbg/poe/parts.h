#pragma once
// The parts of the group "poe", one file for each.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addPoeShowCommands(const Command &poe);
void addPoeSetCommands(const Command &poe);
void addPoePortActions(const Command &poe);
void addPoeInitCommand(const Command &poe);
void addPoeUpgradeCommand(const Command &poe);

} // namespace iodbg
