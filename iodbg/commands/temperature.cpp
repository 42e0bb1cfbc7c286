// iodbg temperature: the board's sensor.

#include "bsp.h"
#include "iodbg/commands/commands.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"

namespace iodbg {

namespace {

ExitCode show(Console &console) {
    int32_t celsius = 0;
    require(ioTemperGet(0, &celsius), "read the temperature sensor");
    Section section = {"", "", {}};
    section.add("temperature_c", "Temperature", {std::to_string(celsius) + " C", int64_t{celsius}});
    return console.print({{section}, {}});
}

} // namespace

void addTemperatureCommand(const Command &root) {
    root.command("temperature", "Show the board's temperature").does(show);
}

} // namespace iodbg
