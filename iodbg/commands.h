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

inline void addCommands(const Command &root) {
    const Command board = root.onKernelModule();
    addShowCommand(board);
    addCheckCommand(root); // finds itself what is missing
    addWatchCommand(root);
    addInitCommand(board);
    addIdentityCommands(board);
    addEepromCommands(board);
    addPowerCommand(board);
    addFanCommands(board);
    addTemperatureCommand(board);
    addClockCommands(board);
    addLedCommands(board);
    addWatchdogCommands(board);
    addPtpCommands(board);
    addRebootCommand(board);
    addCpldCommands(board);
    addI2cCommands(board);
    addGpioCommands(board);
    addPoeCommands(board);
    addSfpCommands(board);
    addMdioCommands(root); // past the kernel module, as all that follow
    addImageCommands(root);
    addBootCommands(root);
    addMtdCommands(root);
    addUpgradeCommands(root);
    addStatusCommand(root);
}

} // namespace iodbg
