// The only source that needs the parser library of command lines.

#include "command_line/line.h"

#include "command_line/closest_word.h"
#include "command_line/completion.h"
#include "command_line/man_page.h"
#include "command_line/page.h"
#include "language/refused.h"
#include "language/texts.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace command_line {

namespace {

using language::quoted;

constexpr size_t kLongestReason = 300;
constexpr char kDashes[] = "--"; // before words that are no options, and before a program's line

using Words = std::vector<std::string>;

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
                              ->default_str(word.usual)
                              ->required(word.isRequired);
    if (word.isMany && word.kind == Word::Kind::Option)
        option->expected(1)->take_all(); // given again and again
    else if (word.isMany)
        option->expected(CLI::detail::expected_max_vector_size)->take_all();
}

/** What options of a command say of each other, once all are there. */
void addConditions(CLI::App &app, const std::vector<Word> &words) {
    for (const Word &word : words) {
        for (const std::string &other : word.others)
            app.get_option(word.name)->excludes(app.get_option(other));
        if (!word.condition.empty())
            app.get_option(word.name)->needs(app.get_option(word.condition));
    }
}

CLI::App &addCommand(CLI::App &app, const Command &command) {
    CLI::App &added = *app.add_subcommand(command.name, command.help);
    for (const std::string &alias : command.aliases)
        added.alias(alias);
    return added;
}

void addWords(CLI::App &app, const Command &command, const Tool &tool) {
    const bool isWhole = command.parent == nullptr;
    if (tool.isJson != nullptr && (isWhole || !command.isGroup))
        app.add_flag("--json", *tool.isJson, "Answer in JSON");
    if (isWhole)
        app.set_version_flag("--version", tool.version, "Print the version and exit");
    if (command.isGroup)
        app.require_subcommand(1);
    else if (!command.commands.empty())
        app.require_subcommand(0, 1);
    // A program without '--' before it is not taken for more arguments of the command.
    app.prefix_command(command.program != nullptr);
    for (const Word &word : command.words)
        addWord(app, word);
    addConditions(app, command.words);
}

bool isCalled(const Command &command, const Words &words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string &word) { return command.isCalled(word); });
}

/** Makes the parser of a command and of its commands that the words can mean: parsers of all would
 * take most of the time of a short command. */
void addParsers(CLI::App &app, Command &command, const Tool &tool, const Words &words) {
    command.complete();
    addWords(app, command, tool);
    for (Command &next : command.commands) {
        if (isCalled(next, words))
            addParsers(addCommand(app, next), next, tool, words);
    }
}

std::string textOf(const Glossary &glossary) {
    Rows rows;
    for (const auto &[word, meaning] : glossary.entries)
        rows.push_back({"  " + word, meaning});
    return glossary.title + ":\n" + inOneBlock(rows);
}

std::string footerOf(const Command &command, const Tool &tool) {
    if (command.parent == nullptr)
        return tool.footer;
    if (command.examples.empty())
        return "'" + command.wholeName() +
               " COMMAND --help' shows a command's options and examples.";
    std::string footer;
    for (const Glossary &glossary : command.glossaries)
        footer += textOf(glossary) + "\n";
    footer += "Examples:\n";
    for (const std::string &example : command.examples)
        footer += "  " + example + "\n";
    return footer;
}

std::string helpOf(const Command &command, const Tool &tool) {
    const std::string details = command.details.empty() ? "" : "\n" + command.details;
    CLI::App app(command.help + details, command.call());
    app.formatter(std::make_shared<HelpFormatter>());
    app.footer(footerOf(command, tool));
    addWords(app, command, tool);
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
const CLI::App &recognisedBefore(const std::string &unknown, const CLI::App &app,
                                 const Words &words) {
    const CLI::App *command = &app;
    for (const std::string &word : words) {
        const std::vector<CLI::App *> next = command->get_subcommands();
        if (!next.empty() && next.back()->check_name(word))
            command = next.back();
        else if (word == unknown && !isOption(word))
            return *command;
    }
    return recognised(app);
}

/** The command of a group whose name was taken for the group's argument; null when none was. */
const Command *takenForArgument(const CLI::App &app, const Command &group) {
    const auto isTaken = [&](const Command &command) {
        const auto arguments = group.arguments();
        return std::any_of(arguments.begin(), arguments.end(), [&](const Word *argument) {
            return app.get_option(argument->name)->results() == Words{command.name};
        });
    };
    const auto found = std::find_if(group.commands.begin(), group.commands.end(), isTaken);
    return found == group.commands.end() ? nullptr : &*found;
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
    const bool isUnexpected = code == CLI::ExitCodes::ExtrasError;
    const bool isCommandMissing =
        std::string(CLI::RequiredError::Subcommand(1).what()) == error.what();
    const bool isCommandWrong = !word.empty() && (isMissing || isUnexpected);
    if ((isCommandMissing || isCommandWrong) && !isOption(word) && !command.commands.empty())
        return commandWanted(word, command.namesOfCommands());
    if (isMissing && !word.empty())
        return quoted(word) + " is not known here";
    // Words that nobody expected are as they were typed; parsers have quoted theirs.
    return language::shortened(isUnexpected ? language::printable(error.what()) : error.what(),
                               kLongestReason);
}

[[noreturn]] void refuse(const std::string &reason, const Command &command) {
    throw WrongUsage(reason + "; see '" + command.wholeName() + " --help'");
}

[[noreturn]] void refuse(const CLI::ParseError &error, const CLI::App &app, const Command &root,
                         const Words &words) {
    const Words unknown = app.remaining(true);
    const std::string word = unknown.empty() ? "" : unknown[0];
    const CLI::App &last = recognised(app);
    const CLI::App &before = recognisedBefore(word, app, words);
    const Command &command = commandOf(before, root);
    if (&before != &last)
        refuse(commandWanted(word, command.namesOfCommands()), command);
    if (const Command *taken = takenForArgument(last, command))
        refuse(command.arguments()[0]->name + " is missing in front of '" + taken->name + "'",
               *taken);
    refuse(reasonOf(error, command, word), command);
}

Action printing(const std::string &text) {
    return [text](Output &output) {
        output.printText(text);
        return 0;
    };
}

/** What a command does once all that it needs is there. */
Action actionOf(const Command &command) {
    Action action = command.action;
    for (const Command *any = &command; any != nullptr; any = any->parent) {
        if (!any->check)
            continue;
        action = [check = any->check, action](Output &output) {
            check();
            return action(output);
        };
    }
    if (!command.detour)
        return action;
    return [detour = command.detour, action](Output &output) {
        const std::optional<int> other = detour(output);
        return other ? *other : action(output);
    };
}

/** The command that takes a program's line, if the words call it; null for others. */
const Command *programsCommand(Command &root, const Words &words) {
    root.complete();
    for (Command &command : root.commands) {
        if (words.empty() || !command.isCalled(words[0]))
            continue;
        command.complete();
        return command.program ? &command : nullptr;
    }
    return nullptr;
}

/** The line of a program, which is its own, options included; taken from behind the others. */
Words takeProgram(Command &root, Words &words) {
    if (programsCommand(root, words) == nullptr)
        return {};
    const auto dashes = std::find(words.begin(), words.end(), kDashes);
    if (dashes == words.end())
        return {};
    Words line(dashes + 1, words.end());
    words.erase(dashes, words.end());
    return line;
}

/** What other programs ask of every tool. */
Action hiddenAction(Tool &tool, const Words &words) {
    if (words == Words{kManPageWord})
        return printing(manPageOf(tool));
    if (words.size() > 1 && words[0] == kCompletionWord && words[1] == kDashes)
        return printing(completionsOf(tool, {words.begin() + 2, words.end()}));
    return nullptr;
}

Action actionForLine(Tool &tool, Words words) {
    const Words program = takeProgram(tool.root, words);
    CLI::App app("", tool.root.name);
    if (tool.isJson != nullptr)
        app.fallthrough(); // options of the whole program may follow a command
    addParsers(app, tool.root, tool, words);
    try {
        app.parse(Words(words.rbegin(), words.rend()));
    } catch (const CLI::CallForHelp &) {
        const Command &command = commandOf(recognised(app), tool.root);
        const Command *taken = takenForArgument(recognised(app), command);
        return printing(helpOf(taken == nullptr ? command : *taken, tool));
    } catch (const CLI::CallForVersion &version) {
        return printing(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError &error) {
        refuse(error, app, tool.root, words);
    }
    const Command &command = commandOf(recognised(app), tool.root);
    if (command.program) {
        try {
            command.program(recognised(app).remaining(), program);
        } catch (const language::Refused &refusal) {
            refuse(refusal.what(), command);
        }
    }
    return actionOf(command);
}

} // namespace

Action actionFor(Tool &tool, std::span<const char *const> words) {
    const Words line(words.begin(), words.end());
    const Action hidden = hiddenAction(tool, line);
    return hidden ? hidden : actionForLine(tool, line);
}

} // namespace command_line
