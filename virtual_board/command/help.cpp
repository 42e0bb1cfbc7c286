#include "virtual_board/command/help.h"

#include <algorithm>

namespace vboard {

namespace {

std::vector<const CLI::Option *> positionalsOf(const CLI::App &command) {
    return command.get_options([](const CLI::Option *option) { return option->get_positional(); });
}

/** The words in front of a command of a group, with names for what the group takes. */
std::string callOf(const CLI::App &group) {
    const CLI::App *above = group.get_parent();
    std::string words = (above == nullptr ? "" : callOf(*above) + " ") + group.get_name();
    for (const CLI::Option *argument : positionalsOf(group))
        words += " " + argument->get_name();
    return words;
}

/** The command of a group whose name was taken for the group's argument; null when none was. */
const CLI::App *takenForArgument(const CLI::App &group) {
    const auto isTaken = [&group](const CLI::App *command) {
        const auto arguments = positionalsOf(group);
        return std::any_of(arguments.begin(), arguments.end(), [&](const CLI::Option *argument) {
            return argument->results() == CLI::results_t{command->get_name()};
        });
    };
    const auto commands = group.get_subcommands(isTaken);
    return commands.empty() ? nullptr : commands.front();
}

const CLI::App &recognised(const CLI::App &app) {
    const std::vector<CLI::App *> commands = app.get_subcommands();
    return commands.empty() ? app : recognised(*commands.back());
}

/** The last command of the line, also where its group's argument is missing in front of it. */
const CLI::App &meantCommand(const CLI::App &app) {
    const CLI::App &last = recognised(app);
    const CLI::App *taken = takenForArgument(last);
    return taken == nullptr ? last : *taken;
}

/** "vboard fault add". */
std::string wholeName(const CLI::App &command) {
    const CLI::App *group = command.get_parent();
    return (group == nullptr ? "" : wholeName(*group) + " ") + command.get_name();
}

/** What is wrong, with the word that somebody took for a command. */
std::string reasonOf(const CLI::App &command, const CLI::ParseError &mistake) {
    const std::vector<std::string> words = command.remaining();
    const bool isWithoutCommand =
        std::string(mistake.what()) == CLI::RequiredError::Subcommand(1).what();
    if (!isWithoutCommand || words.empty())
        return mistake.what();
    const bool isOption = words.front().starts_with('-');
    return std::string("there is no ") + (isOption ? "option" : "command") + " '" + words.front() +
           "'";
}

} // namespace

std::string helpWanted(const CLI::App &app) {
    const CLI::App &command = meantCommand(app);
    const CLI::App *group = command.get_parent();
    return command.help(group == nullptr ? "" : callOf(*group));
}

std::string mistakeText(const CLI::App &app, const CLI::ParseError &mistake) {
    const CLI::App &command = meantCommand(app);
    const bool isMisplaced = &command != &recognised(app);
    const std::string reason = isMisplaced
                                   ? "DIR is missing in front of '" + command.get_name() + "'"
                                   : reasonOf(command, mistake);
    return reason + "; '" + wholeName(command) + " --help' tells more";
}

} // namespace vboard
