// `vboard fault`.

#include "language/numbers.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/rules.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/fault_table.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

List<VBoardFault> rulesOf(VBoard *board) {
    return List<VBoardFault>([&](VBoardFault **list, uint32_t *count, VBoardError *error) {
        return vboardFaults(board, list, count, error);
    });
}

/** The numbers of the rules of the board in the folder that stands before them. */
Offers numbersOfRules() {
    return {{}, Offers::Files::None, [](const std::vector<std::string> &arguments) {
                const Board board(arguments.at(0)); // fails where the folder is missing
                std::vector<std::string> numbers;
                for (const VBoardFault &rule : rulesOf(board))
                    numbers.push_back(std::to_string(rule.id));
                return numbers;
            }};
}

template <typename Value, size_t count>
Offers offersOf(const vb::FaultWord<Value> (&list)[count],
                Offers::Files files = Offers::Files::None) {
    Offers offers = {{}, files, nullptr};
    for (const auto &word : list)
        offers.words.emplace_back(word.text);
    return offers;
}

/** "no-answer", "refuse=" */
Offers offeredEffects() {
    Offers offers;
    for (const vb::FaultEffectWords &effect : vb::kFaultEffects)
        offers.words.push_back(effect.text +
                               std::string(effect.value == vb::FaultValue::None ? "" : "="));
    return offers;
}

/** The words of a table as choices. */
template <typename Row, size_t count, typename TextOf>
std::string choices(const Row (&table)[count], TextOf textOf) {
    std::string text;
    for (const Row &row : table)
        text += (text.empty() ? "" : "|") + std::string(textOf(row));
    return text;
}

template <typename Value, size_t count>
std::string choices(const vb::FaultWord<Value> (&table)[count]) {
    return choices(table, [](const auto &word) { return word.text; });
}

Glossary devicesTold() {
    Glossary devices = {"Devices", {}};
    for (const vb::FaultTargetWords &target : vb::kFaultTargets) {
        const std::string offset =
            target.offset == nullptr ? "" : "; --offset is " + std::string(target.offset);
        devices.entries.emplace_back(target.device,
                                     std::string(target.requests) + "; --op " +
                                         language::listed(vb::opsOf(target.target), "or") + offset);
    }
    return devices;
}

Glossary effectsTold() {
    Glossary effects = {"Effects", {}};
    for (const vb::FaultEffectWords &effect : vb::kFaultEffects)
        effects.entries.emplace_back(
            vb::formOf(effect), std::string(effect.sentence) + " (" +
                                    language::listed(vb::devicesOf(effect.effect), "and") + ")");
    return effects;
}

/** "Only those at this place: a CPLD register, ..." */
std::string offsetHelp() {
    std::vector<std::string> places;
    for (const vb::FaultTargetWords &target : vb::kFaultTargets) {
        if (target.offset != nullptr)
            places.emplace_back(target.offset);
    }
    return "Only requests at this place: " + language::listed(places, "or");
}

struct FaultArguments {
    std::string folder;
    FaultWords rule;
    std::vector<std::string> ids;
    bool asJson = false;
};

void defineFaultAdd(Command &fault, const std::shared_ptr<FaultArguments> &arguments) {
    FaultWords *words = &arguments->rule;
    Command &command = fault.command("add", "Add a rule and print its number");
    command.requiredOption(
        "--device", "DEVICE",
        choices(vb::kFaultDevices) + "|i2c:BUS.CHANNEL.DEVICE, or the path of a file of the board",
        {text(words->device), offersOf(vb::kFaultDevices, Offers::Files::Paths)});
    command
        .option("--op", "OPERATION", choices(vb::kFaultOps),
                {text(words->op), offersOf(vb::kFaultOps)})
        .usually(words->op);
    command.option("--offset", "N", offsetHelp(), text(words->offset));
    command.option("--nth", "N", "Which matching request, counted from 1", text(words->nth))
        .usually(words->nth);
    command
        .option("--when", "WORD",
                choices(vb::kFaultWhens) + ": once, every n-th, or the n-th and all behind it",
                {text(words->when), offersOf(vb::kFaultWhens)})
        .usually(words->when);
    command.requiredOption("--effect", "EFFECT", choices(vb::kFaultEffects, vb::formOf),
                           {text(words->effect), offeredEffects()});
    command.glossary(devicesTold()).glossary(effectsTold());
    for (const char *line :
         {"--device cpld --op read --offset 1 --effect refuse=-5",
          "--device i2c:0.0.0x51 --nth 3 --when from --effect no-answer",
          "--device /dev/bspHandle --op open --effect open-fails=ENODEV",
          "--device /tmp/bsp/devId --op read --effect short=2",
          "--device poe --op write --offset 0x42 --effect late-answer=3",
          "--device poe --op reset --effect no-answer",
          "--device mtd12 --op program --offset 0x800 --when from --effect fails=EIO",
          "--device mtd4 --op change --nth 2 --effect power-cut=100",
          "--device console --op write --effect fails=EIO"})
        command.example(std::string("vboard fault board add ") + line);
    command.does([arguments] { addFault(arguments->folder, arguments->rule); });
}

void defineFault(Command &fault) {
    const auto arguments = std::make_shared<FaultArguments>();
    addFolder(fault, arguments->folder);
    fault.example("vboard fault board add --help")
        .example("vboard fault board list")
        .example("vboard fault board clear 2");
    defineFaultAdd(fault, arguments);

    Command &list = fault.command("list", "List the rules and how often they fired");
    addJson(list, arguments->asJson);
    list.example("vboard fault board list --json").does([arguments] {
        listFaults(arguments->folder, arguments->asJson);
    });

    Command &clear = fault.command("clear", "Remove rules; without a number, all");
    clear.optionalArguments("ID", "Numbers of rules", {texts(arguments->ids), numbersOfRules()});
    clear.example("vboard fault board clear").example("vboard fault board clear 1 3");
    clear.does([arguments] { clearFaults(arguments->folder, arguments->ids); });
}

} // namespace

void addFault(Command &root) {
    root.group("fault", "Let requests go wrong by rules", defineFault);
}

uint32_t addRule(VBoard *board, const FaultWords &rule) {
    VBoardFault fault = {};
    fault.size = sizeof(fault);
    fault.device = rule.device.c_str();
    fault.op = rule.op.c_str();
    fault.offset = rule.offset.c_str();
    fault.nth = rule.nth.c_str();
    fault.when = rule.when.c_str();
    fault.effect = rule.effect.c_str();
    uint32_t id = 0;
    call([&](VBoardError *error) { return vboardAddFault(board, &fault, &id, error); });
    return id;
}

void addFault(const std::string &folder, const FaultWords &rule) {
    std::printf("%u\n", addRule(Board(folder), rule));
}

void listFaults(const std::string &folder, bool asJson) {
    const Board board(folder);
    auto list = nlohmann::json::array();
    for (const VBoardFault &rule : rulesOf(board)) {
        if (asJson)
            list.push_back(nlohmann::json::parse(rule.json));
        else
            std::printf("%u: %s (matched %u, fired %u)\n", rule.id, rule.text, rule.matched,
                        rule.fired);
    }
    if (asJson)
        printJson(list);
}

void clearFaults(const std::string &folder, const std::vector<std::string> &ids) {
    std::vector<uint32_t> numbers;
    numbers.reserve(ids.size());
    for (const std::string &text : ids) {
        const auto id = language::readNumber<uint32_t>(text, 0, UINT32_MAX);
        if (!id.has_value())
            throw language::Refused("there is no fault rule " + text +
                                    "; 'vboard fault DIR list' lists them; none was cleared");
        numbers.push_back(*id);
    }
    const Board board(folder);
    call([&](VBoardError *error) {
        return vboardClearFaults(board, numbers.data(), static_cast<uint32_t>(numbers.size()),
                                 error);
    });
}

} // namespace vboard
