// `vboard fault`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

nlohmann::json faultJson(const vb::FaultRule &rule) {
    const vb::FaultWords words = vb::faultWords(rule);
    return {{"id", rule.id},
            {"device", words.device},
            {"op", words.op},
            {"offset", rule.hasOffset != 0 ? nlohmann::json(rule.offset) : nlohmann::json()},
            {"nth", rule.nth},
            {"when", words.when},
            {"effect", words.effect},
            {"matched", rule.matched},
            {"fired", rule.fired}};
}

void printFault(const vb::FaultRule &rule) {
    std::printf("%u: %s (matched %u, fired %u)\n", rule.id, vb::faultText(rule).c_str(),
                rule.matched, rule.fired);
}

bool hasFault(const vb::FaultTable &table, uint32_t id) {
    for (const vb::FaultRule &rule : table.rule) {
        if (rule.id == id && id != 0)
            return true;
    }
    return false;
}

/** The numbers of the rules of the board in the folder that stands before them. */
Offers numbersOfRules() {
    return {{}, Offers::Files::None, [](const std::vector<std::string> &arguments) {
                const LockedBoard board(arguments.at(0)); // fails where the folder is missing
                std::vector<std::string> numbers;
                for (const vb::FaultRule &rule : board->faults.rule) {
                    if (rule.id != 0)
                        numbers.push_back(std::to_string(rule.id));
                }
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
        devices.entries.emplace_back(target.device, std::string(target.requests) + "; --op " +
                                                        vb::listed(vb::opsOf(target.target), "or") +
                                                        offset);
    }
    return devices;
}

Glossary effectsTold() {
    Glossary effects = {"Effects", {}};
    for (const vb::FaultEffectWords &effect : vb::kFaultEffects)
        effects.entries.emplace_back(vb::formOf(effect),
                                     std::string(effect.sentence) + " (" +
                                         vb::listed(vb::devicesOf(effect.effect), "and") + ")");
    return effects;
}

/** "Only those at this place: a CPLD register, ..." */
std::string offsetHelp() {
    std::vector<std::string> places;
    for (const vb::FaultTargetWords &target : vb::kFaultTargets) {
        if (target.offset != nullptr)
            places.emplace_back(target.offset);
    }
    return "Only requests at this place: " + vb::listed(places, "or");
}

struct FaultArguments {
    std::string folder;
    vb::FaultWords rule;
    std::vector<std::string> ids;
    bool asJson = false;
};

void defineFaultAdd(Command &fault, const std::shared_ptr<FaultArguments> &arguments) {
    vb::FaultWords *words = &arguments->rule;
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

void addFault(const std::string &folder, const vb::FaultWords &words) {
    const vb::FaultRule rule = vb::parseFault(words);
    const LockedBoard board(folder);
    const uint32_t id = vb::addFault(board->faults, rule);
    if (id == 0)
        throw vb::Refused("the board has " + std::to_string(vb::kMaxFaults) +
                          " fault rules already; clear some first");
    board.folder().tellOfChange();
    std::printf("%u\n", id);
}

void listFaults(const std::string &folder, bool asJson) {
    const LockedBoard board(folder);
    auto list = nlohmann::json::array();
    for (const vb::FaultRule &rule : board->faults.rule) {
        if (rule.id == 0)
            continue;
        if (asJson)
            list.push_back(faultJson(rule));
        else
            printFault(rule);
    }
    if (asJson)
        // A path may hold any byte.
        printJson(list);
}

void clearFaults(const std::string &folder, const std::vector<std::string> &ids) {
    const LockedBoard board(folder);
    std::vector<uint32_t> numbers;
    for (const std::string &text : ids) {
        const auto id = vb::parseNumber(text, UINT32_MAX);
        if (!id.has_value() || !hasFault(board->faults, *id))
            throw vb::Refused("there is no fault rule " + text +
                              "; 'vboard fault DIR list' lists them; none was cleared");
        numbers.push_back(*id);
    }
    for (const uint32_t id : numbers)
        vb::removeFault(board->faults, id);
    for (const vb::FaultRule &rule : board->faults.rule) {
        if (ids.empty())
            vb::removeFault(board->faults, rule.id);
    }
    board.folder().tellOfChange();
}

} // namespace vboard
