// iodbg reboot: the hardware reset.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/core/confirm.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"

#include <cstdio>

namespace iodbg {

namespace {

ExitCode reboot(Console &console, bool isConfirmed) {
    if (!isConfirmed)
        confirm("Reset the board now?");
    std::fputs("iodbg: resetting the board\n", stderr);
    require(bspHwReboot(), "reset the board");
    Section section = {"", "", {}};
    section.add("reset", "Reset", flagCell(true, "requested", ""));
    return console.print({{section}, {}});
}

} // namespace

void addRebootCommand(Command &root) {
    const auto isConfirmed = std::make_shared<bool>(false);
    Command &command = root.command(
        "reboot", "Reset the board in hardware, at once.\nNo program is told, and what files have "
                  "not been synchronised to flash is lost");
    command.flag("--yes", kYesHelp, *isConfirmed);
    command.detail("Run 'sync' before it.");
    command.example("iodbg reboot").example("iodbg reboot --yes");
    command.onlyAfter(requireKernelModule);
    command.does([isConfirmed](Console &console) { return reboot(console, *isConfirmed); });
}

} // namespace iodbg
