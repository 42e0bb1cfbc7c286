#pragma once
// The commands about the chassis.

#include "iodbg/core/command.h"

namespace iodbg {

void addPowerCommand(Command &root);
void addFanCommands(Command &root);
void addTemperatureCommand(Command &root);
void addClockCommands(Command &root);
void addLedCommands(Command &root);
void addWatchdogCommands(Command &root);
void addPtpCommands(Command &root);
void addRebootCommand(Command &root);

} // namespace iodbg
