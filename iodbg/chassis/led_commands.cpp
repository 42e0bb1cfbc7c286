// iodbg led: the lamps of the front panel.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/chassis/lamps.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"

namespace iodbg {

namespace {

ExitCode showLamps(Console &console) {
    Report report;
    addPanelLamps(report);
    addPoeLamps(report);
    return console.print(report);
}

struct Setting {
    uint32_t lamp = 1;
    uint32_t state = 0;
};

int32_t send(const LampKind &kind, const Setting &setting) {
    if (kind.isPoe())
        return ioPoePortLedStateSet(setting.lamp, setting.state);
    return ioLedStateSet(0, setting.lamp, kind.number, 0, setting.state);
}

ExitCode setLamp(Console &console, const LampKind &kind, const Setting &setting) {
    const std::string name = "LED " + std::string(kind.word) +
                             (kind.index == nullptr ? "" : " " + std::to_string(setting.lamp));
    requireInRange(send(kind, setting), "set " + name);

    const uint32_t reg = kind.registerOf(setting.lamp);
    uint16_t content = 0;
    require(bspCpldGet(reg, &content), "read back " + registerName(reg));
    const uint32_t state = kind.stateIn(content, setting.lamp);
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

const char *statesOf(const LampKind &kind) {
    return kind.highestState == 1 ? "off|on|0|1" : "off|0|1|2|3";
}

/** Takes off and on, or the state's number. */
Parser stateOf(const LampKind &kind, uint32_t &target) {
    return [&kind, &target](const std::string &word) {
        if (word == "off" || (word == "on" && kind.highestState == 1)) {
            target = word == "on" ? 1 : 0;
            return;
        }
        try {
            number(target, kind.highestState)(word);
        } catch (const language::Refused &) {
            language::refuse(word, std::string("is none of ") + statesOf(kind));
        }
    };
}

void addSet(Command &setGroup, const LampKind &kind) {
    const auto setting = std::make_shared<Setting>();
    Command &command = setGroup.command(kind.word, kind.label);
    command.alias(std::to_string(kind.number));
    if (kind.index != nullptr)
        command.argument(kind.index, "1-" + std::to_string(kind.lamps),
                         numberFromOne(setting->lamp, kind.lamps));
    command.argument("STATE", statesOf(kind),
                     offering(statesOf(kind), stateOf(kind, setting->state)));
    command.example(kind.example);
    command.does([&kind, setting](Console &console) { return setLamp(console, kind, *setting); });
}

void defineLed(Command &led) {
    led.detail("These are the lamps of the PoE ports, too.").example("iodbg led");
    led.does(showLamps);
    takesCapturedUnit(led.command("get", "Show the lamps"))
        .example("iodbg led get --json")
        .does(showLamps);
    Command &setGroup = led.group("set", "Set a lamp and read it back");
    for (const LampKind &kind : kLampKinds)
        addSet(setGroup, kind);
}

} // namespace

void addLedCommands(Command &root) {
    root.command("led", "Lamps of the front panel; alone it shows them", defineLed)
        .onlyAfter(requireKernelModule);
}

} // namespace iodbg
