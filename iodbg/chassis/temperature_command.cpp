// iodbg temperature: the board's sensor.

#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"

namespace iodbg {

namespace {

ExitCode show(Console &console) {
    Cell celsius;
    require(readTemperature(celsius), "read the temperature sensor");
    Section section = {"", "", {}};
    section.add("temperature_c", "Temperature", celsius);
    return console.print({{section}, {}});
}

} // namespace

void addTemperatureCommand(Command &root) {
    root.command("temperature", "Show the board's temperature")
        .onlyAfter(requireKernelModule)
        .example("iodbg temperature")
        .does(show);
}

} // namespace iodbg
