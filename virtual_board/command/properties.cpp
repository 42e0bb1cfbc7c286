// The world's side of a board: `vboard get` and `vboard set`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/words/world.h"

#include <cstdio>
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

} // namespace

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
