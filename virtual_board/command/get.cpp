// `vboard get`.

#include "language/property_names.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;
using Properties = Board::Properties;

bool hasPattern(const std::vector<std::string> &names) {
    return std::any_of(names.begin(), names.end(), language::isPattern);
}

void printObject(const Properties &properties) {
    Json object = Json::object();
    for (const VBoardProperty &property : properties) {
        object[property.name] = Json::parse(property.json);
        if (*property.note != '\0')
            object[std::string(property.name) + ".note"] = property.note;
    }
    printJson(object);
}

void printLine(const VBoardProperty &property, size_t mostCharacters) {
    const std::string value = property.value;
    const std::string note = *property.note == '\0' ? "" : "  (" + std::string(property.note) + ")";
    std::printf("%-22s %s%s%s\n", property.name, value.substr(0, mostCharacters).c_str(),
                value.size() > mostCharacters ? "..." : "", note.c_str());
}

void printTable(const Properties &properties) {
    constexpr size_t kMostCharacters = 64;
    for (const VBoardProperty &property : properties) {
        if (property.isIdle == 0)
            printLine(property, kMostCharacters);
    }
    std::fprintf(stderr,
                 "Not shown: CPLD registers that hold 0x0000, GPIO inputs at level 0, PoE ports "
                 "without a device, empty cages, MDIO registers, what the flash holds.\n");
}

void printValues(const Properties &properties) {
    for (const VBoardProperty &property : properties) {
        std::printf("%s\n", property.value);
        if (*property.note != '\0')
            std::fprintf(stderr, "%s: %s\n", property.name, property.note);
    }
}

/** What completion offers; the board's folder stands before it. */
std::vector<std::string> offeredNames(const std::vector<std::string> &arguments) {
    std::vector<std::string> names;
    for (const VBoardProperty &property : Board(arguments[0]).properties({}))
        names.emplace_back(property.name);
    return names;
}

void defineGet(Command &command) {
    struct Arguments {
        std::string folder;
        std::vector<std::string> names;
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.optionalArguments("NAME", "Properties, or patterns of shells: 'fan.*'",
                              {texts(arguments->names), {{}, Offers::Files::None, offeredNames}});
    addJson(command, arguments->asJson);
    command.detail("A pattern stands for all that fit it. In JSON numbers are numbers.\n"
                   "'vboard properties' lists the names.");
    command.example("vboard get board")
        .example("vboard get board cpld.2 supply.1.present")
        .example("vboard get board 'fan.*' --json")
        .example("vboard get board eeprom.board@0x100+16");
    command.does(
        [arguments] { getProperties(arguments->folder, arguments->names, arguments->asJson); });
}

} // namespace

void addGet(Command &root) {
    root.command("get", "Show what the board holds; without a name, everything", defineGet);
}

void getProperties(const std::string &folder, const std::vector<std::string> &names, bool asJson) {
    const Board board(folder);
    const Properties found = board.properties(names);
    if (asJson)
        printObject(found);
    else if (names.empty())
        printTable(found);
    else if (!hasPattern(names))
        printValues(found);
    else
        for (const VBoardProperty &property : found)
            printLine(property, std::string::npos);
}

} // namespace vboard
