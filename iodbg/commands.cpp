#include "iodbg/commands.h"

#include "iodbg/chassis/commands.h"
#include "iodbg/core/commands.h"
#include "iodbg/core/exit_code.h"
#include "iodbg/flash/commands.h"
#include "iodbg/identity/commands.h"
#include "iodbg/poe/commands.h"
#include "iodbg/registers/commands.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/unit/commands.h"

namespace iodbg {

namespace {

void addCommands(Command &root) {
    root.isGroup = true;
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

} // namespace

Tool makeTool(bool &isJson) {
    return {
        {"iodbg",
         "Reads and changes what is on the board: identity, EEPROMs, power supplies, fans, "
         "temperature, clock, LEDs, watchdog, PoE, SFP modules, flash, upgrades, boot settings, "
         "CPLD registers, I2C devices, GPIO lines, MDIO registers; judges and watches the unit.",
         addCommands},
        "'iodbg COMMAND --help' shows a command's options and examples.\n\n" +
            std::string(kExitCodeHelp),
        "iodbg " IODBG_VERSION,
        &isJson};
}

} // namespace iodbg
