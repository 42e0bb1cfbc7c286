// iodbg poe set: settings of ports and the power budget, read back where the library can.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/cells.h"
#include "iodbg/poe/guide.h"
#include "iodbg/poe/parts.h"

#include <set>
#include <string>

namespace iodbg {

namespace {

/** How a value's word becomes the library's number. */
using ValueParser = Parser (*)(uint32_t &target);

/** A power that is set: up to a highest, and rounded up by the controller. */
struct Milliwatts {
    uint32_t highest;
    uint32_t bsp::PoeGuide::*unit;
};
constexpr Milliwatts kPortLimit = {BSP_POE_PORT_LIMIT_MAX_MW, &bsp::PoeGuide::portLimitStepMw};
constexpr Milliwatts kBudget = {BSP_POE_BUDGET_MAX_MW, &bsp::PoeGuide::budgetStepMw};

/** "0 to 102000; rounded up to 400", for all controllers. */
std::string rangeText(const Milliwatts &power) {
    std::set<uint32_t> units;
    for (const bsp::PoeGuideRow &row : bsp::kPoeGuides)
        units.insert(row.guide.*power.unit);
    std::string text;
    for (const uint32_t unit : units)
        text += (text.empty() ? "" : " or ") + std::to_string(unit);
    return "0 to " + std::to_string(power.highest) + "; rounded up to " + text;
}

/** What one of the ports' settings is called, takes, and how it is set and read. */
struct Setting {
    const char *name;
    const char *help;
    const char *valueHelp; // before the range of a power
    const char *example;
    ValueParser parser;
    int32_t (*set)(uint32_t port, uint32_t value);
    int32_t (*get)(uint32_t port, uint32_t *out); // null: nothing reads it
    const Milliwatts *power;                      // null: it is none
    Cell (*cell)(uint32_t value);
};

Cell switchCell(uint32_t value) {
    return flagCell(value == BSP_POE_ON, "on", "off");
}

Parser modeParser(uint32_t &target) {
    return oneOf(target, {{"auto", BSP_POE_MODE_0},
                          {"semi", BSP_POE_MODE_1},
                          {"manual", BSP_POE_MODE_2},
                          {"disabled", BSP_POE_MODE_DISABLED}});
}

Parser switchParser(uint32_t &target) {
    return oneOf(target, {{"on", BSP_POE_ON}, {"off", BSP_POE_OFF}});
}

template <uint32_t Lowest, uint32_t Highest>
Parser numberParser(uint32_t &target) {
    return numberWithin(target, Lowest, Highest);
}

constexpr Setting kSettings[] = {
    {"mode",
     "Who powers the ports: the controller (auto), a command after detection (semi), "
     "commands for every step (manual), or nobody (disabled)",
     "auto|semi|manual|disabled", "iodbg poe set mode 3 semi", modeParser, ioPoePortModeSet,
     ioPoePortModeGet, nullptr, poeModeCell},
    {"priority", "Which ports keep their power when the budget is spent",
     "1|2|3; 1 is the most important", "iodbg poe set priority 1-4 1",
     numberParser<BSP_POE_PRIORITY_MIN, BSP_POE_PRIORITY_MAX>, ioPoePortPrioritySet, nullptr,
     nullptr, poeNumberCell},
    {"limit", "Power limit", "Milliwatts, ", "iodbg poe set limit 3 30000",
     numberParser<0, kPortLimit.highest>, ioPoePortMaxPowerSet, ioPoePortMaxPowerGet, &kPortLimit,
     poeNumberCell},
    {"limit-type", "What limits the ports' power",
     "1|2: the device's class, or the limit that is set", "iodbg poe set limit-type 3 2",
     numberParser<BSP_POE_LIMIT_TYPE_MIN, BSP_POE_LIMIT_TYPE_MAX>, ioPoePortMaxPowerTypeSet,
     nullptr, nullptr, poeNumberCell},
    {"legacy", "Detection of devices older than the standard", "on|off",
     "iodbg poe set legacy all off", switchParser, ioPoePortLegacyEnableSet, nullptr, nullptr,
     switchCell},
    {"inrush", "Inrush mode", "0 to 8", "iodbg poe set inrush 3 6",
     numberParser<0, BSP_POE_INRUSH_MODE_MAX>, ioPoePortInrushModeSet, ioPoePortInrushModeGet,
     nullptr, poeNumberCell},
    {"force-inrush", "Forced inrush", "on|off", "iodbg poe set force-inrush 3 off", switchParser,
     ioPoePortForceInrushSet, nullptr, nullptr, switchCell},
};

constexpr uint32_t roundedUp(uint32_t value, uint32_t unit) {
    return (value + unit - 1) / unit * unit;
}

/** To what the controller rounds a setting up; known before anything is set. */
uint32_t unitOf(const Setting &setting, bsp::PoeChip chip) {
    return setting.power != nullptr ? poeGuide(chip).*setting.power->unit : 1;
}

/** What a port reads back, which must be what was set. */
Cell readBack(const Setting &setting, uint32_t port, uint32_t value, uint32_t unit) {
    if (setting.get == nullptr)
        return {"not readable", nullptr};
    const std::string name = std::string(setting.name) + " of port " + std::to_string(port);
    uint32_t stored = 0;
    require(setting.get(port, &stored), "read back the " + name);
    if (stored != roundedUp(value, unit))
        throw Failure(ExitCode::ReadBack, "the " + name + " was set to " +
                                              setting.cell(value).text + " but reads " +
                                              setting.cell(stored).text + "; see 'iodbg poe port " +
                                              std::to_string(port) + "'");
    return setting.cell(stored);
}

ExitCode setPorts(Console &console, const Setting &setting, const PortList &list, uint32_t value) {
    Table table = {"ports", {{"port", "PORT"}, {"set_to", "SET TO"}, {"read_back", "READS"}}, {}};
    const Model model = requirePoe();
    const uint32_t unit = unitOf(setting, model.poeChip);
    for (const uint32_t port : list.within(model.poePorts)) {
        require(setting.set(port, value),
                std::string("set the ") + setting.name + " of port " + std::to_string(port));
        table.rows.push_back(
            {numberCell(port), setting.cell(value), readBack(setting, port, value, unit)});
    }
    return console.print({{table}, {}});
}

ExitCode setBudget(Console &console, uint32_t milliwatts) {
    const uint32_t unit = poeGuide(requirePoe().poeChip).*kBudget.unit;
    require(ioPoeGlobalMaxPowerSet(milliwatts), "set the power budget");
    uint32_t stored = 0;
    require(ioPoeGlobalMaxPowerGet(&stored), "read back the power budget");
    if (stored != roundedUp(milliwatts, unit))
        throw Failure(ExitCode::ReadBack, "the power budget was set to " +
                                              std::to_string(milliwatts) + " mW but reads " +
                                              std::to_string(stored) + " mW; set it again");
    Section section = {"", "", {}};
    section.add("budget_mw", "Power budget, W", milliCell(stored));
    return console.print({{section}, {}});
}

void addPortSetting(Command &group, const Setting &setting) {
    struct Arguments {
        PortList ports;
        uint32_t value = 0;
    };
    const auto arguments = std::make_shared<Arguments>();
    Command &command = group.command(setting.name, setting.help);
    command.argument("PORTS", kPortListHelp, portList(arguments->ports));
    command.argument(
        "VALUE", setting.valueHelp + (setting.power != nullptr ? rangeText(*setting.power) : ""),
        setting.parser(arguments->value));
    command.example(setting.example);
    command.does([&setting, arguments](Console &console) {
        return setPorts(console, setting, arguments->ports, arguments->value);
    });
}

} // namespace

void addPoeSetCommands(Command &poe) {
    Command &group = poe.group("set", "Change settings of ports, or the power budget");
    for (const Setting &setting : kSettings)
        addPortSetting(group, setting);

    const auto milliwatts = std::make_shared<uint32_t>(0);
    Command &budget = group.command("budget", "Power budget of all ports");
    budget.argument("MILLIWATTS", rangeText(kBudget), number(*milliwatts, kBudget.highest));
    budget.example("iodbg poe set budget 370000");
    budget.does([milliwatts](Console &console) { return setBudget(console, *milliwatts); });
}

} // namespace iodbg
