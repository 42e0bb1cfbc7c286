// `vboard set`.

#include "command_line/line.h"
#include "language/property_names.h"
#include "language/property_values.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

/** What is given a value: NAME=VALUE..., or one NAME and its VALUE. */
Assignments assignmentsOf(const std::vector<std::string> &words) {
    if (words.size() == 2 && words[0].find('=') == std::string::npos)
        return {{words[0], words[1]}};
    Assignments assignments;
    for (const std::string &word : words) {
        const size_t equals = word.find('=');
        if (equals == std::string::npos)
            throw WrongUsage(language::quoted(word) +
                             " has no value: give NAME=VALUE, or one NAME and its VALUE; see "
                             "'vboard set --help'");
        assignments.push_back({word.substr(0, equals), word.substr(equals + 1)});
    }
    return assignments;
}

// What completion offers; the board's folder stands before it.

/** "fan.1.state=good", "fan.1.speed=": what can be set, with its words where it has some. */
std::vector<std::string> offeredAssignments(const Board::Properties &properties) {
    std::vector<std::string> assignments;
    for (const VBoardProperty &property : properties) {
        const std::string name = property.name;
        const language::Property &row = *language::rowOf(name);
        const std::vector<std::string> words = wordsToSet(row);
        if (words.empty() && row.isSettable)
            assignments.push_back(name + "=");
        for (const std::string &word : words)
            assignments.emplace_back(name).append("=").append(word);
    }
    return assignments;
}

std::vector<std::string> offeredChanges(const std::vector<std::string> &arguments) {
    const bool isValue = arguments.size() == 2 && arguments[1].find('=') == std::string::npos;
    const language::Property *row = isValue ? language::rowOf(arguments[1]) : nullptr;
    return row != nullptr ? wordsToSet(*row)
                          : offeredAssignments(Board(arguments[0]).properties({}));
}

void defineSet(Command &command) {
    struct Arguments {
        std::string folder;
        std::vector<std::string> words;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(command, arguments->folder);
    command
        .argument("NAME", "NAME=VALUE, or one property and its new value",
                  {texts(arguments->words), {{}, Offers::Files::None, offeredChanges}})
        .repeatable();
    command.detail("Plugs a supply, stops a fan, moves the calendar clock. Where one change is "
                   "refused, nothing changes.\n"
                   "'vboard properties' lists the names.");
    command.example("vboard set board supply.2.present no")
        .example("vboard set board fan.1.state=stuck temperature.ambient=40")
        .example("vboard set board cpld.2 0x2413")
        .example("vboard set board poe.3.device 'class=4 draws=18000'")
        .example("vboard set board eeprom.board@0x100 00ff")
        .example("vboard set board identity.mac 02:00:5e:10:00:01");
    command.does(
        [arguments] { setProperties(arguments->folder, assignmentsOf(arguments->words)); });
}

} // namespace

void addSet(Command &root) {
    root.command("set", "Change what the board holds", defineSet);
}

void setProperties(const std::string &folder, const Assignments &assignments) {
    std::vector<VBoardChange> changes;
    changes.reserve(assignments.size());
    for (const auto &[name, value] : assignments)
        changes.push_back({name.c_str(), value.c_str()});
    const Board board(folder);
    call([&](VBoardError *error) {
        return vboardSet(board, changes.data(), static_cast<uint32_t>(changes.size()), error);
    });
}

} // namespace vboard
