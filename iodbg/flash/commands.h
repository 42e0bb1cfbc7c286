#pragma once
// The commands about flash, boot settings and upgrades.

#include "iodbg/core/command.h"

namespace iodbg {

void addImageCommands(Command &root);
void addBootCommands(Command &root);
void addMtdCommands(Command &root);
void addUpgradeCommands(Command &root);

} // namespace iodbg
