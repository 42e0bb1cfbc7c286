// `vboard get`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;
using Properties = std::vector<vb::Property>;
using Strings = std::vector<std::string>;

bool hasPattern(const std::vector<std::string> &names) {
    return std::any_of(names.begin(), names.end(), vb::isPattern);
}

/** Every property, or those of the names and patterns, each once for all patterns that it fits. */
Properties selected(const std::string &folder, const std::vector<std::string> &names) {
    const LockedBoard board(folder);
    if (names.empty())
        return vb::properties(board.folder());
    Properties found;
    for (const std::string &name : names) {
        if (!vb::isPattern(name)) {
            found.push_back(vb::namedProperty(board.folder(), name));
            continue;
        }
        for (const vb::Property &property : vb::matchingProperties(board.folder(), name)) {
            const bool isThere =
                std::any_of(found.begin(), found.end(),
                            [&](const vb::Property &other) { return other.name == property.name; });
            if (!isThere)
                found.push_back(property);
        }
    }
    return found;
}

void printObject(const Properties &properties) {
    Json object = Json::object();
    for (const vb::Property &property : properties) {
        object[property.name] = language::valueJson(*property.type, property.content);
        if (!property.note.empty())
            object[property.name + ".note"] = property.note;
    }
    printJson(object);
}

void printLine(const vb::Property &property, size_t mostCharacters) {
    const bool isCut = property.value.size() > mostCharacters;
    const std::string note = property.note.empty() ? "" : "  (" + property.note + ")";
    std::printf("%-22s %s%s%s\n", property.name.c_str(),
                property.value.substr(0, mostCharacters).c_str(), isCut ? "..." : "", note.c_str());
}

void printTable(const Properties &properties) {
    constexpr size_t kMostCharacters = 64;
    for (const vb::Property &property : properties) {
        if (!property.isIdle)
            printLine(property, kMostCharacters);
    }
    std::fprintf(stderr,
                 "Not shown: CPLD registers that hold 0x0000, GPIO inputs at level 0, PoE ports "
                 "without a device, empty cages, MDIO registers, what the flash holds.\n");
}

void printValues(const Properties &properties) {
    for (const vb::Property &property : properties) {
        std::printf("%s\n", property.value.c_str());
        if (!property.note.empty())
            std::fprintf(stderr, "%s: %s\n", property.name.c_str(), property.note.c_str());
    }
}

/** What completion offers; the board's folder stands before it. */
Strings offeredNames(const Strings &arguments) {
    Strings names;
    for (const language::PropertyName &name : namesOfProperties(arguments[0]))
        names.push_back(nameText(name));
    return names;
}

void defineGet(Command &command) {
    struct Arguments {
        std::string folder;
        Strings names;
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
    const Properties found = selected(folder, names);
    if (asJson)
        printObject(found);
    else if (names.empty())
        printTable(found);
    else if (!hasPattern(names))
        printValues(found);
    else
        for (const vb::Property &property : found)
            printLine(property, std::string::npos);
}

} // namespace vboard
