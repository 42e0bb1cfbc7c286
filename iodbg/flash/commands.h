#pragma once
// The commands about flash, boot settings and upgrades.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addImageCommands(const Command &root);
void addBootCommands(const Command &root);
void addMtdCommands(const Command &root);
void addUpgradeCommands(const Command &root);

} // namespace iodbg
