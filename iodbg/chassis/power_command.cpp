// iodbg power: the power supplies.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"

#include <optional>

namespace iodbg {

namespace {

uint32_t readCount() {
    int32_t count = 0;
    require(ioPowerNumGet(&count), "read the number of supplies");
    return static_cast<uint32_t>(count);
}

ExitCode power(Console &console, const std::optional<uint32_t> &wanted) {
    const uint32_t count = readCount();
    if (wanted > count)
        throw Failure::refused("read supply " + std::to_string(*wanted), BSP_E_INVALID,
                               "the board has " + std::to_string(count) + " supplies");
    Model model;
    require(readModel(model), "read the device id");

    Report report;
    Section summary = {"", "", {}};
    summary.add("supply_count", "Supplies", numberCell(count));
    report.parts.emplace_back(summary);
    for (uint32_t supply = wanted.value_or(1); supply <= wanted.value_or(count); ++supply) {
        const std::string number = std::to_string(supply);
        Section section = {"supply" + number, "Supply " + number, {}};
        addSupply(report, section, model, supply, Readings::All);
        report.parts.emplace_back(section);
    }
    return console.print(report);
}

} // namespace

void addPowerCommand(Command &root) {
    const auto supply = std::make_shared<std::optional<uint32_t>>();
    Command &command =
        root.command("power", "Show the power supplies: presence, type, status, live readings.\n"
                              "The readings of a supply take about a second");
    command.optionalArgument("N", "Number of a supply, 1-6 (default: all)",
                             [supply](const std::string &word) {
                                 numberFromOne(supply->emplace(), BSP_SUPPLIES_MAX)(word);
                             });
    command.example("iodbg power").example("iodbg power 2 --json");
    command.onlyAfter(requireKernelModule);
    takesCapturedUnit(command);
    command.does([supply](Console &console) { return power(console, *supply); });
}

} // namespace iodbg
