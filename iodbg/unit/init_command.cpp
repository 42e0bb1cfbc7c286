// iodbg init: what the management software does once after a start.

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/unit/commands.h"

namespace iodbg {

void addInitCommand(Command &root) {
    root.command("init", "Start the library as the management software does: the system clock is "
                         "set from the clock chip")
        .onlyAfter(requireKernelModule)
        .example("iodbg init")
        .does([](Console &console) {
            require(bspInit(), "start the library");
            Section section = {"", "", {}};
            section.add("system", "System clock (local time)",
                        textCell(calendarText(systemTime())));
            return console.print({{section}, {}});
        });
}

} // namespace iodbg
