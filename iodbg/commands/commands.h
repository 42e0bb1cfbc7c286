#pragma once
// The groups of commands, one file for each.

#include "iodbg/command_line.h"

namespace iodbg {

void addShowCommand(const Command &root);
void addCheckCommand(const Command &root);
void addWatchCommand(const Command &root);
void addInitCommand(const Command &root);
void addIdentityCommands(const Command &root);
void addEepromCommands(const Command &root);
void addPowerCommand(const Command &root);
void addFanCommands(const Command &root);
void addTemperatureCommand(const Command &root);
void addClockCommands(const Command &root);
void addLedCommands(const Command &root);
void addWatchdogCommands(const Command &root);
void addPtpCommands(const Command &root);
void addRebootCommand(const Command &root);
void addCpldCommands(const Command &root);
void addI2cCommands(const Command &root);
void addGpioCommands(const Command &root);
void addPoeCommands(const Command &root);
void addSfpCommands(const Command &root);
void addMdioCommands(const Command &root);
void addImageCommands(const Command &root);
void addBootCommands(const Command &root);
void addMtdCommands(const Command &root);
void addUpgradeCommands(const Command &root);
void addStatusCommand(const Command &root);

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
