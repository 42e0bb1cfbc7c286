// iodbg gpio: GPIO lines of the processor.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/registers/commands.h"
#include "support/board_map.h"

namespace iodbg {

namespace {

struct LineArguments {
    uint32_t line = 0;
    uint32_t level = 0;
};

uint32_t readLevel(uint32_t line) {
    uint32_t level = 0;
    requireInRange(bspGpioGetValue(line, &level), "read GPIO line " + std::to_string(line));
    return level;
}

Report describe(uint32_t line, uint32_t level) {
    Section section = {"", "", {}};
    section.add("line", "Line", numberCell(line));
    section.add("level", "Level", numberCell(level));
    return {{section}, {}};
}

/** The lines that the board has wired to something. */
struct KnownLine {
    uint32_t line;
    const char *name;
};
constexpr KnownLine kKnownLines[] = {
    {bsp::kWatchdogGpio, "watchdog: an edge feeds it"},
    {bsp::kPoeResetGpio, "reset of the PoE controller: low"},
};

ExitCode list(Console &console) {
    Report report;
    Table table = {"lines", {{"line", "LINE"}, {"level", "LEVEL"}, {"name", "NAME"}}, {}};
    for (const KnownLine &known : kKnownLines) {
        uint32_t level = 0;
        const int32_t status = bspGpioGetValue(known.line, &level);
        table.rows.push_back(
            {numberCell(known.line),
             report.tried("line" + std::to_string(known.line), status, numberCell(level)),
             textCell(known.name)});
    }
    report.parts.emplace_back(table);
    return console.print(report);
}

ExitCode get(Console &console, const LineArguments &arguments) {
    return console.print(describe(arguments.line, readLevel(arguments.line)));
}

ExitCode set(Console &console, const LineArguments &arguments) {
    const std::string name = "GPIO line " + std::to_string(arguments.line);
    requireInRange(bspGpioDirectionOutput(arguments.line, static_cast<int32_t>(arguments.level)),
                   "drive " + name);
    const uint32_t level = readLevel(arguments.line);
    if (level != arguments.level)
        throw Failure(ExitCode::ReadBack,
                      name + " was driven to " + std::to_string(arguments.level) + " but reads " +
                          std::to_string(level) + "; check what else drives it");
    return console.print(describe(arguments.line, level));
}

void defineGpio(Command &gpio) {
    takesCapturedUnit(gpio.command("list", "Read the levels of the lines that the board has wired"))
        .detail("Reading a line feeds no watchdog and resets nothing.")
        .example("iodbg gpio list")
        .does(list);

    const auto arguments = std::make_shared<LineArguments>();
    Command &getCommand = gpio.command("get", "Read the level of a line");
    getCommand.argument("LINE", "Number of the line", number(arguments->line));
    getCommand.example("iodbg gpio get 19");
    takesCapturedUnit(getCommand);
    getCommand.does([arguments](Console &console) { return get(console, *arguments); });

    Command &setCommand = gpio.command("set", "Make a line an output and drive it");
    setCommand.argument("LINE", "Number of the line", number(arguments->line));
    setCommand.argument("LEVEL", "0|1", number(arguments->level, 1));
    setCommand.example("iodbg gpio set 0 1");
    setCommand.does([arguments](Console &console) { return set(console, *arguments); });
}

} // namespace

void addGpioCommands(Command &root) {
    root.group("gpio", "GPIO lines", defineGpio).onlyAfter(requireKernelModule);
}

} // namespace iodbg
