// iodbg led: the lamps of the front panel.

#include "bsp.h"
#include "iodbg/commands/commands.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"
#include "iodbg/model.h"

#include <vector>

namespace iodbg {

namespace {

constexpr uint32_t kLampRegister = 7;
constexpr uint32_t kPoeRegister = 13; // the first of several
constexpr uint32_t kPortsPerRegister = 16;
constexpr uint32_t kPoeKind = 9;
constexpr int kRegisterDigits = 4;

/** Where the lamps of a kind lie: a field for each, counted from number 1 or the only one. */
struct Kind {
    uint32_t number;
    const char *word;
    const char *label;
    const char *index; // what numbers its lamps; null when there is only one
    uint32_t lamps;
    uint32_t highestState;
    uint32_t reg;
    uint32_t lowestBit;
    uint32_t width;

    uint32_t registerOf(uint32_t lamp) const { return reg + (lamp - 1) / kPortsPerRegister; }
    uint32_t bitOf(uint32_t lamp) const {
        return lowestBit + (lamp - 1) % kPortsPerRegister * width;
    }
};

constexpr Kind kSystem = {1, "system", "System lamp", nullptr, 1, 3, kLampRegister, 0, 2};
constexpr Kind kLamp4 = {4, "lamp4", "Lamp 4", nullptr, 1, 1, kLampRegister, 4, 1};
constexpr Kind kLamp5 = {5, "lamp5", "Lamp 5", nullptr, 1, 1, kLampRegister, 5, 1};
constexpr Kind kIndexed = {7, "indexed", "Indexed lamp", "LAMP", 10, 1, kLampRegister, 6, 1};
constexpr Kind kPoe = {kPoeKind, "poe", "LED of a PoE port", "PORT", 48, 1, kPoeRegister, 0, 1};
constexpr const Kind *kKinds[] = {&kSystem, &kLamp4, &kLamp5, &kIndexed, &kPoe};

/** The state that a lamp's register shows. */
uint32_t stateIn(uint16_t content, const Kind &kind, uint32_t lamp) {
    const uint32_t field = uint32_t{content} >> kind.bitOf(lamp) & ((1u << kind.width) - 1);
    if (&kind == &kPoe)
        return field == 0 ? 1 : 0;                     // active low
    constexpr uint32_t kSystemStates[] = {0, 3, 2, 1}; // 1 and 3 change places on their way
    return &kind == &kSystem ? kSystemStates[field] : field;
}

std::string stateWord(const Kind &kind, uint32_t state) {
    if (state == 0)
        return "off";
    return kind.highestState == 1 ? "on" : std::to_string(state);
}

Cell stateCell(const Kind &kind, uint32_t state) {
    return {stateWord(kind, state), int64_t{state}};
}

std::string registerName(uint32_t reg) {
    return "CPLD register " + std::to_string(reg);
}

// Showing

/** Which of the first lamps of a kind are lit, by their registers. */
Cell litCell(const Kind &kind, const std::vector<uint16_t> &registers, uint32_t lamps) {
    std::vector<int64_t> lit;
    for (uint32_t lamp = 1; lamp <= lamps; ++lamp) {
        if (stateIn(registers[kind.registerOf(lamp) - kind.reg], kind, lamp) == 1)
            lit.push_back(lamp);
    }
    return listCell(lit);
}

/** Adds registers to a section; true when all could be read. */
bool addRegisters(Report &report, Section &section, uint32_t first,
                  std::vector<uint16_t> &registers) {
    const size_t failuresBefore = report.failures.size();
    for (uint32_t i = 0; i < registers.size(); ++i) {
        const int32_t status = bspCpldGet(first + i, &registers[i]);
        const std::string key = "register_" + std::to_string(first + i);
        section.add(
            key, registerName(first + i),
            report.tried(section.key + "." + key, status, hexCell(registers[i], kRegisterDigits)));
    }
    return report.failures.size() == failuresBefore;
}

void addPanelLamps(Report &report) {
    Section section = {"panel", "Front panel", {}};
    std::vector<uint16_t> registers(1);
    if (addRegisters(report, section, kLampRegister, registers)) {
        for (const Kind *kind : {&kSystem, &kLamp4, &kLamp5})
            section.add(kind->word, kind->label, stateCell(*kind, stateIn(registers[0], *kind, 1)));
        section.add("indexed_on", "Indexed lamps on", litCell(kIndexed, registers, kIndexed.lamps));
    }
    report.parts.emplace_back(section);
}

void addPoeLamps(Report &report) {
    Section section = {"poe", "PoE ports", {}};
    Model model;
    const int32_t status = readModel(model);
    section.add("ports", "Number of ports",
                report.tried("poe.ports", status, numberCell(model.poePorts)));
    if (status == BSP_OK && model.poePorts > 0) {
        std::vector<uint16_t> registers(kPoe.registerOf(model.poePorts) - kPoeRegister + 1);
        if (addRegisters(report, section, kPoeRegister, registers))
            section.add("ports_on", "Port LEDs on", litCell(kPoe, registers, model.poePorts));
    }
    report.parts.emplace_back(section);
}

ExitCode show(Console &console) {
    Report report;
    addPanelLamps(report);
    addPoeLamps(report);
    return console.print(report);
}

// Setting

struct Setting {
    uint32_t lamp = 1;
    uint32_t state = 0;
};

int32_t send(const Kind &kind, const Setting &setting) {
    if (&kind == &kPoe)
        return ioPoePortLedStateSet(setting.lamp, setting.state);
    return ioLedStateSet(0, setting.lamp, kind.number, 0, setting.state);
}

ExitCode set(Console &console, const Kind &kind, const Setting &setting) {
    const std::string name = "LED " + std::string(kind.word) +
                             (kind.index == nullptr ? "" : " " + std::to_string(setting.lamp));
    require(send(kind, setting), "set " + name);

    const uint32_t reg = kind.registerOf(setting.lamp);
    uint16_t content = 0;
    require(bspCpldGet(reg, &content), "read back " + registerName(reg));
    const uint32_t state = stateIn(content, kind, setting.lamp);
    if (state != setting.state)
        throw Failure(ExitCode::ReadBack, name + " was set to " + stateWord(kind, setting.state) +
                                              ", and " + registerName(reg) + " says " +
                                              stateWord(kind, state) +
                                              "; another program may drive it");

    Section section = {"", "", {}};
    section.add("led", "LED", textCell(kind.word));
    if (kind.index != nullptr)
        section.add("index", "Index", numberCell(setting.lamp));
    section.add("state", "State", stateCell(kind, state));
    return console.print({{section}, {}});
}

/** Takes off and on, or the state's number. */
Parser stateOf(const Kind &kind, uint32_t &target) {
    return [&kind, &target](const std::string &word) {
        if (word == "off" || (word == "on" && kind.highestState == 1))
            target = word == "on" ? 1 : 0;
        else
            number(target, kind.highestState)(word);
    };
}

void addSet(const Command &setGroup, const Kind &kind) {
    const auto setting = std::make_shared<Setting>();
    const Command command = setGroup.command(kind.word, kind.label);
    command.alias(std::to_string(kind.number));
    if (kind.index != nullptr)
        command.argument(kind.index, "1-" + std::to_string(kind.lamps),
                         numberFromOne(setting->lamp, kind.lamps));
    command.argument("STATE", kind.highestState == 1 ? "off|on, or 0|1" : "off, or 0-3",
                     stateOf(kind, setting->state));
    command.does([&kind, setting](Console &console) { return set(console, kind, *setting); });
}

} // namespace

void addLedCommands(const Command &root) {
    const Command led = root.command("led", "Lamps of the front panel; alone it shows them");
    led.does(show);
    led.command("get", "Show the lamps").does(show);
    const Command setGroup = led.group("set", "Set a lamp and read it back");
    for (const Kind *kind : kKinds)
        addSet(setGroup, *kind);
}

} // namespace iodbg
