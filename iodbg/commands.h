#pragma once
// All commands, in the order in which the help shows them.

#include "iodbg/chassis/commands.h"
#include "iodbg/core/commands.h"
#include "iodbg/flash/commands.h"
#include "iodbg/identity/commands.h"
#include "iodbg/poe/commands.h"
#include "iodbg/registers/commands.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/unit/commands.h"

namespace iodbg {

inline void addCommands(Command &root) {
    addShowCommand(root);
    addCheckCommand(root);
    addWatchCommand(root);
    addInitCommand(root);
    addIdentityCommands(root);
    addEepromCommands(root);
    addPowerCommand(root);
    addFanCommands(root);
    addTemperatureCommand(root);
    addClockCommands(root);
    addLedCommands(root);
    addWatchdogCommands(root);
    addPtpCommands(root);
    addRebootCommand(root);
    addCpldCommands(root);
    addI2cCommands(root);
    addGpioCommands(root);
    addPoeCommands(root);
    addSfpCommands(root);
    addMdioCommands(root);
    addImageCommands(root);
    addBootCommands(root);
    addMtdCommands(root);
    addUpgradeCommands(root);
    addStatusCommand(root);
}

} // namespace iodbg
