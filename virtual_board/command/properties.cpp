// The world's side of a board: `vboard get` and `vboard set`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/world.h"

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;

/** Every property, or the named ones. */
std::vector<vb::Property> selected(const std::string &folder,
                                   const std::vector<std::string> &names) {
    const LockedBoard board(folder);
    if (names.empty())
        return vb::properties(board.folder());
    std::vector<vb::Property> found;
    found.reserve(names.size());
    for (const std::string &name : names)
        found.push_back({name, vb::property(board.folder(), name), false,
                         vb::propertyNote(board.folder(), name)});
    return found;
}

void printJson(const std::vector<vb::Property> &properties) {
    Json object = Json::object();
    for (const vb::Property &property : properties) {
        object[property.name] = property.value;
        if (!property.note.empty())
            object[property.name + ".note"] = property.note; // a text as all others
    }
    // A command line that another program wrote may hold any byte.
    std::printf("%s\n", object.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

void printTable(const std::vector<vb::Property> &properties) {
    constexpr size_t kMostCharacters = 64;
    for (const vb::Property &property : properties) {
        if (property.isIdle)
            continue;
        const bool isCut = property.value.size() > kMostCharacters;
        const std::string note = property.note.empty() ? "" : "  (" + property.note + ")";
        std::printf("%-22s %s%s%s\n", property.name.c_str(),
                    property.value.substr(0, kMostCharacters).c_str(), isCut ? "..." : "",
                    note.c_str());
    }
    std::fprintf(stderr,
                 "Not shown: CPLD registers that hold 0x0000, GPIO inputs at level 0, PoE ports "
                 "without a device, empty cages, MDIO registers, what the flash holds.\n");
}

/** The names of the properties of the board in the folder that stands before them. */
Offers namesOfProperties() {
    return {{}, Offers::Files::None, [](const std::vector<std::string> &arguments) {
                std::vector<std::string> names;
                for (const vb::Property &property : selected(arguments[0], {}))
                    names.push_back(property.name);
                return names;
            }};
}

void defineGet(Command &command) {
    struct Arguments {
        std::string folder;
        std::vector<std::string> names;
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.optionalArguments("NAME", "Properties", {texts(arguments->names), namesOfProperties()});
    addJson(command, arguments->asJson);
    command.example("vboard get board")
        .example("vboard get board cpld.2 supply.1.present")
        .example("vboard get board eeprom.board@0x100+16");
    command.does(
        [arguments] { getProperties(arguments->folder, arguments->names, arguments->asJson); });
}

void defineSet(Command &command) {
    struct Arguments {
        std::string folder, name, value;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command.argument("NAME", "Property", {text(arguments->name), namesOfProperties()});
    command.argument("VALUE", "Its new value", text(arguments->value));
    command.detail("Plugs a supply, stops a fan, moves the calendar clock.");
    command.example("vboard set board supply.2.present no")
        .example("vboard set board cpld.2 0x2413")
        .example("vboard set board poe.3.device 'class=4 draws=18000'")
        .example("vboard set board eeprom.board@0x100 00ff")
        .example("vboard set board identity.mac 02:00:5e:10:00:01");
    command.does(
        [arguments] { setProperty(arguments->folder, arguments->name, arguments->value); });
}

} // namespace

void addGet(Command &root) {
    root.command("get", "Show what the board holds; without a name, everything", defineGet);
}

void addSet(Command &root) {
    root.command("set", "Change what the board holds", defineSet);
}

void getProperties(const std::string &folder, const std::vector<std::string> &names, bool asJson) {
    const std::vector<vb::Property> found = selected(folder, names);
    if (asJson) {
        printJson(found);
    } else if (names.empty()) {
        printTable(found);
    } else {
        for (const vb::Property &property : found) {
            std::printf("%s\n", property.value.c_str());
            if (!property.note.empty())
                std::fprintf(stderr, "%s: %s\n", property.name.c_str(), property.note.c_str());
        }
    }
}

void setProperty(const std::string &folder, const std::string &name, const std::string &value) {
    const LockedBoard board(folder);
    vb::setProperty(board.folder(), name, value);
}

} // namespace vboard
