// iodbg temperature: the sensors.

#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"

namespace iodbg {

namespace {

ExitCode showTemperature(Console &console) {
    Section section = {"", "", {}};
    for (const Temperature &temperature : kTemperatures) {
        Cell celsius;
        require(temperature.item.read(celsius), temperature.what);
        section.add(temperature.item.key, temperature.item.label, celsius);
    }
    return console.print({{section}, {}});
}

} // namespace

void addTemperatureCommand(Command &root) {
    takesCapturedUnit(root.command("temperature", "Show the board's temperature"))
        .onlyAfter(requireKernelModule)
        .example("iodbg temperature")
        .does(showTemperature);
}

} // namespace iodbg
