#include "iodbg/commands.h"

#include "iodbg/chassis/commands.h"
#include "iodbg/core/commands.h"
#include "iodbg/core/exit_code.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/commands.h"
#include "iodbg/identity/commands.h"
#include "iodbg/poe/commands.h"
#include "iodbg/poe/debug.h"
#include "iodbg/registers/commands.h"
#include "iodbg/trace/commands.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/unit/commands.h"

#include <exception>
#include <span>
#include <string>

namespace iodbg {

namespace {

void addCommands(Command &root) {
    root.isGroup = true;
    root.chapter("The whole unit");
    addShowCommand(root);
    addCheckCommand(root);
    addCaptureCommand(root);
    addDiffCommand(root);
    addWatchCommand(root);
    addMetricsCommand(root);
    addInitCommand(root);
    addTraceCommand(root);
    addStatusCommand(root);

    root.chapter("Identity and EEPROMs");
    addIdentityCommands(root);
    addEepromCommands(root);

    root.chapter("Chassis");
    addPowerCommand(root);
    addFanCommands(root);
    addTemperatureCommand(root);
    addClockCommands(root);
    addLedCommands(root);
    addWatchdogCommands(root);
    addPtpCommands(root);
    addRebootCommand(root);

    root.chapter("Registers, buses and lines");
    addCpldCommands(root);
    addI2cCommands(root);
    addGpioCommands(root);
    addMdioCommands(root);

    root.chapter("SFP modules");
    addSfpCommands(root);

    root.chapter("Power over Ethernet",
                 "The controller's driver has debug words of its own behind 'poe'; 'iodbg poe -h' "
                 "lists them.");
    addPoeCommands(root);

    root.chapter("Flash",
                 "DEVICE is 'mtd0' (boot loader), 'mtd4' (boot settings), 'mtd12' or 'mtd14' (the "
                 "banks of the operating system), or the path of a device.\n"
                 "Commands that replace something ask first, not with --yes, and compare what is "
                 "stored.");
    addImageCommands(root);
    addBootCommands(root);
    addMtdCommands(root);
    addUpgradeCommands(root);
}

ExitCode runCommand(Console &console, int argc, const char *const *argv) {
    if (isPoeDebug(argc, argv))
        return runPoeDebug(console, argc, argv);
    Tool tool = makeTool(console.isJson());
    const std::span words(argv, static_cast<size_t>(argc));
    console.takeWords({words.begin(), words.end()});
    const Action action = actionFor(tool, words.subspan(words.empty() ? 0 : 1));
    return static_cast<ExitCode>(action(console));
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

ExitCode carryOut(Console &console, int argc, const char *const *argv) {
    try {
        return runCommand(console, argc, argv);
    } catch (const Failure &failure) {
        return console.print(failure);
    } catch (const WrongUsage &mistake) {
        return console.print(Failure::usage(mistake.what()));
    } catch (const std::exception &exception) {
        return console.print(Failure(ExitCode::Host, exception.what()));
    }
}

} // namespace iodbg
