// iodbg fan: the fans and their common speed level.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/items.h"
#include "support/board_map.h"

namespace iodbg {

namespace {

constexpr Item kLevelItem[] = {{"level", "Level (1-10)", readFanLevel}};

ExitCode showFans(Console &console) {
    Model model;
    require(readModel(model), "read the device id");
    Report report;
    Section section = {"", "", {}};
    addItems(report, section, kLevelItem);
    report.parts.emplace_back(section);
    report.parts.emplace_back(fanTable(report, model));
    return console.print(report);
}

ExitCode setFans(Console &console, uint32_t level) {
    require(ioFanSpeedSet(1, static_cast<int32_t>(level)), "set the fans' level");
    uint32_t stored = 0;
    require(readFanLevel(stored), "read the fans' level back");
    if (stored != level)
        throw Failure(ExitCode::ReadBack,
                      "the fans' level " + std::to_string(level) + " was written, and it reads " +
                          std::to_string(stored) + "; check what else writes CPLD register " +
                          std::to_string(bsp::kFanLevel.reg));
    Section section = {"", "", {}};
    section.add("level", "Level", numberCell(level));
    section.add("verified", "Verified",
                flagCell(true, "read back; the fans take some seconds to follow", ""));
    return console.print({{section}, {}});
}

void defineFan(Command &fan) {
    takesCapturedUnit(fan.command("get", "Show level, presence and speed"))
        .example("iodbg fan get")
        .does(showFans);
    const auto level = std::make_shared<uint32_t>(0);
    Command &setCommand = fan.command("set", "Set the level of all fans and read it back");
    setCommand.argument("LEVEL", "1 (slowest) to 10",
                        numberWithin(*level, BSP_FAN_LEVEL_MIN, BSP_FAN_LEVEL_MAX));
    setCommand.example("iodbg fan set 5");
    setCommand.does([level](Console &console) { return setFans(console, *level); });
}

} // namespace

void addFanCommands(Command &root) {
    root.group("fan", "The fans", defineFan).onlyAfter(requireKernelModule);
}

} // namespace iodbg
