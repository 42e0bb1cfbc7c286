#pragma once
// The commands about the chassis.

#include "iodbg/core/command_line.h"

namespace iodbg {

void addPowerCommand(const Command &root);
void addFanCommands(const Command &root);
void addTemperatureCommand(const Command &root);
void addClockCommands(const Command &root);
void addLedCommands(const Command &root);
void addWatchdogCommands(const Command &root);
void addPtpCommands(const Command &root);
void addRebootCommand(const Command &root);

} // namespace iodbg
