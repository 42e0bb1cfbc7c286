// The only file that needs the parser library of command lines.

#include "iodbg/core/command_line.h"

#include "iodbg/core/closest_word.h"
#include "iodbg/core/console.h"
#include "iodbg/core/examples.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/page.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace iodbg {

namespace {

constexpr char kJsonHelp[] = "Answer in JSON";
constexpr size_t kLongestReason = 300;

using Words = std::span<const char *const>;

/** Help on a page as wide as all that the program prints. */
class HelpFormatter : public CLI::Formatter {
  public:
    std::string make_description(const CLI::App *app) const override {
        return inLines(app->get_description(), kPageWidth) + "\n";
    }
    std::string make_option_desc(const CLI::Option *option) const override {
        return besideNames(option->get_description());
    }
    std::string make_subcommand(const CLI::App *command) const override {
        std::ostringstream line;
        CLI::detail::format_help(line, command->get_display_name(true),
                                 besideNames(command->get_description()), get_column_width());
        return line.str();
    }

  private:
    std::string besideNames(const std::string &text) const {
        return inLines(text, kPageWidth - get_column_width());
    }
};

/** Hands words to a parser, and says which argument a refused one was for. */
CLI::callback_t takenBy(const std::string &name, const Parser &parser) {
    return [name, parser](const CLI::results_t &words) {
        try {
            for (const std::string &word : words)
                parser(word);
        } catch (const language::Refused &refusal) {
            throw CLI::ValidationError(name, refusal.what());
        }
        return true;
    };
}

void addWord(CLI::App &app, const Word &word) {
    if (word.kind == Word::Kind::Flag) {
        app.add_flag(word.name, *word.flag, word.help);
        return;
    }
    CLI::Option *option = app.add_option(word.name, takenBy(word.name, word.parser), word.help)
                              ->type_name(word.valueName)
                              ->required(word.isRequired);
    if (word.isMany)
        option->expected(-1)->take_all();
}

CLI::App &addCommand(CLI::App &app, const Command &command) {
    CLI::App &added = *app.add_subcommand(command.name, command.help);
    for (const std::string &alias : command.aliases)
        added.alias(alias);
    return added;
}

void addWords(CLI::App &app, const Command &command, const Program &program) {
    const bool isWhole = command.parent == nullptr;
    if (isWhole || !command.isGroup)
        app.add_flag("--json", program.isJson, kJsonHelp);
    if (isWhole)
        app.set_version_flag("--version", program.version, "Print the version and exit");
    if (command.isGroup)
        app.require_subcommand(1);
    for (const Word &word : command.words)
        addWord(app, word);
}

bool isCalled(const Command &command, Words words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char *word) { return command.isCalled(word); });
}

/** Makes the parser of a command and of its commands that the words can mean: parsers of all would
 * take most of the time of a short command. */
void addParsers(CLI::App &app, Command &command, const Program &program, Words words) {
    command.complete();
    addWords(app, command, program);
    for (Command &next : command.commands) {
        if (isCalled(next, words))
            addParsers(addCommand(app, next), next, program, words);
    }
}

std::string footerOf(const Command &command, const Program &program) {
    if (command.parent == nullptr)
        return program.footer;
    if (command.isGroup)
        return "'" + command.wholeName() +
               " COMMAND --help' shows a command's options and examples.";
    return "Examples:\n" + examplesOf(command.wholeName());
}

std::string helpOf(const Command &command, const Program &program) {
    CLI::App app(command.help, command.wholeName());
    app.formatter(std::make_shared<HelpFormatter>());
    app.footer(footerOf(command, program));
    addWords(app, command, program);
    for (const Command &next : command.commands)
        addCommand(app, next);
    return app.help();
}

const Command &commandOf(const CLI::App &app, const Command &root) {
    if (app.get_parent() == nullptr)
        return root;
    const std::list<Command> &known = commandOf(*app.get_parent(), root).commands;
    return *std::find_if(known.begin(), known.end(),
                         [&](const Command &command) { return command.name == app.get_name(); });
}

/** The last command that was recognised in the words. */
const CLI::App &recognised(const CLI::App &app) {
    const std::vector<CLI::App *> commands = app.get_subcommands();
    return commands.empty() ? app : recognised(*commands.back());
}

bool isOption(const std::string &word) {
    return word.size() > 1 && word[0] == '-';
}

/** The last command that was recognised before a word that nobody knows. A word behind it may
 * look like a command of its own, yet stands where the unknown one's arguments were meant to. */
const CLI::App &recognisedBefore(const std::string &unknown, const CLI::App &app, Words words) {
    const CLI::App *command = &app;
    for (const std::string word : words) {
        const std::vector<CLI::App *> next = command->get_subcommands();
        if (!next.empty() && next.back()->check_name(word))
            command = next.back();
        else if (word == unknown && !isOption(word))
            return *command;
    }
    return recognised(app);
}

/** What to say of a word where a command is wanted, or of none. */
std::string commandWanted(const std::string &word, const std::vector<std::string> &names) {
    std::string known;
    for (const std::string &name : names)
        known += (known.empty() ? "" : "|") + name;
    if (word.empty())
        return "a command is missing: give one of " + known;
    const std::string close = closestWord(word, names);
    return quoted(word) + " is none of " + known +
           (close.empty() ? "" : " (did you mean '" + close + "'?)");
}

/** What is wrong. A word that nobody knows says more than the one that is missing for it. */
std::string reasonOf(const CLI::ParseError &error, const Command &command,
                     const std::string &word) {
    const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const bool isMissing = code == CLI::ExitCodes::RequiredError;
    const bool concernsWords = isMissing || code == CLI::ExitCodes::ExtrasError;
    if (concernsWords && !isOption(word) && !command.commands.empty())
        return commandWanted(word, command.namesOfCommands());
    if (isMissing && !word.empty())
        return quoted(word) + " is not known here";
    // Words that nobody expected are as they were typed; parsers have quoted theirs.
    const bool isQuoted = code != CLI::ExitCodes::ExtrasError;
    return shortened(isQuoted ? error.what() : printable(error.what()), kLongestReason);
}

Failure wrongUsage(const CLI::ParseError &error, const CLI::App &app, const Command &root,
                   Words words) {
    const std::vector<std::string> unknown = app.remaining(true);
    const std::string word = unknown.empty() ? "" : unknown[0];
    const CLI::App &last = recognised(app);
    const CLI::App &before = recognisedBefore(word, app, words);
    const Command &command = commandOf(before, root);
    const std::string reason = &before != &last ? commandWanted(word, command.namesOfCommands())
                                                : reasonOf(error, command, word);
    return Failure::usage(reason + "; see '" + command.wholeName() + " --help'");
}

Action printing(const std::string &text) {
    return [text](Console &console) {
        console.printText(text);
        return ExitCode::Ok;
    };
}

/** What a command does once all that it needs is there. */
Action actionOf(const Command &command) {
    Action action = command.action;
    for (const Command *any = &command; any != nullptr; any = any->parent) {
        if (!any->check)
            continue;
        action = [check = any->check, action](Console &console) {
            check();
            return action(console);
        };
    }
    return action;
}

} // namespace

Action parseCommandLine(Program &program, Words words) {
    CLI::App app("", program.root.name);
    app.fallthrough(); // options of the whole program may follow a command
    addParsers(app, program.root, program, words);
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::CallForHelp &) {
        return printing(helpOf(commandOf(recognised(app), program.root), program));
    } catch (const CLI::CallForVersion &version) {
        return printing(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError &error) {
        throw wrongUsage(error, app, program.root, words);
    }
    return actionOf(commandOf(recognised(app), program.root));
}

} // namespace iodbg
