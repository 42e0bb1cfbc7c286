// The only file that needs the parser library of command lines.

#include "iodbg/core/command_line.h"

#include "iodbg/core/closest_word.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/examples.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/page.h"

#include <CLI/CLI.hpp>
#include <span>
#include <sstream>

namespace iodbg {

namespace {

constexpr char kJsonHelp[] = "Answer in JSON";
constexpr size_t kLongestReason = 300;

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
        } catch (const std::invalid_argument &refusal) {
            throw CLI::ValidationError(name, refusal.what());
        }
        return true;
    };
}

CLI::Option *addOption(CLI::App &app, const std::string &name, const std::string &help,
                       const Parser &parser) {
    return app.add_option(name, takenBy(name, parser), help);
}

/** "iodbg cpld set" */
std::string wholeName(const CLI::App &app) {
    const CLI::App *group = app.get_parent();
    return (group == nullptr ? "" : wholeName(*group) + " ") + app.get_name();
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
                                 std::span<const char *const> words) {
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

std::vector<std::string> namesOfCommands(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; }))
        names.push_back(command->get_name());
    return names;
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
std::string reasonOf(const CLI::ParseError &error, const CLI::App &command,
                     const std::string &word) {
    const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const bool isMissing = code == CLI::ExitCodes::RequiredError;
    const std::vector<std::string> names = namesOfCommands(command);
    const bool concernsWords = isMissing || code == CLI::ExitCodes::ExtrasError;
    if (concernsWords && !isOption(word) && !names.empty())
        return commandWanted(word, names);
    if (isMissing && !word.empty())
        return quoted(word) + " is not known here";
    // Words that nobody expected are as they were typed; parsers have quoted theirs.
    const bool isQuoted = code != CLI::ExitCodes::ExtrasError;
    return shortened(isQuoted ? error.what() : printable(error.what()), kLongestReason);
}

Action printing(const std::string &text) {
    return [text](Console &console) {
        console.printText(text);
        return ExitCode::Ok;
    };
}

/** One line instead of one for each thing that could not be read. */
Action behindKernelModule(const Action &action) {
    return [action](Console &console) {
        requireKernelModule();
        return action(console);
    };
}

} // namespace

Command Command::group(const std::string &name, const std::string &help) const {
    CLI::App *app = app_.add_subcommand(name, help);
    app->require_subcommand(1);
    app->footer("'" + wholeName(*app) + " COMMAND --help' shows a command's options and examples.");
    return {*app, grammar_, needsKernelModule_};
}

Command Command::command(const std::string &name, const std::string &help) const {
    CLI::App *app = app_.add_subcommand(name, help);
    app->add_flag("--json", grammar_.isJson, kJsonHelp);
    app->footer("Examples:\n" + examplesOf(wholeName(*app)));
    return {*app, grammar_, needsKernelModule_};
}

const Command &Command::alias(const std::string &name) const {
    app_.alias(name);
    return *this;
}

const Command &Command::argument(const std::string &name, const std::string &help,
                                 const Parser &parser) const {
    addOption(app_, name, help, parser)->required()->type_name("");
    return *this;
}

const Command &Command::optionalArgument(const std::string &name, const std::string &help,
                                         const Parser &parser) const {
    addOption(app_, name, help, parser)->type_name("");
    return *this;
}

const Command &Command::optionalArguments(const std::string &name, const std::string &help,
                                          const Parser &parser) const {
    addOption(app_, name, help, parser)->type_name("")->expected(-1)->take_all();
    return *this;
}

const Command &Command::option(const std::string &name, const std::string &valueName,
                               const std::string &help, const Parser &parser) const {
    addOption(app_, name, help, parser)->type_name(valueName);
    return *this;
}

const Command &Command::requiredOption(const std::string &name, const std::string &valueName,
                                       const std::string &help, const Parser &parser) const {
    addOption(app_, name, help, parser)->type_name(valueName)->required();
    return *this;
}

const Command &Command::flag(const std::string &name, const std::string &help, bool &target) const {
    app_.add_flag(name, target, help);
    return *this;
}

void Command::does(const Action &action) const {
    const Action whole = needsKernelModule_ ? behindKernelModule(action) : action;
    app_.callback([&app = app_, &chosen = grammar_.chosen, whole] {
        if (app.get_subcommands().empty()) // else one of its own commands has been chosen
            chosen = whole;
    });
}

CommandLine::CommandLine(const std::string &description, const std::string &footer,
                         const std::string &version, bool &isJson)
    : app_(std::make_unique<CLI::App>(description, "iodbg")), grammar_{{}, isJson} {
    app_->formatter(std::make_shared<HelpFormatter>()); // of all commands, which are added later
    app_->fallthrough(); // options of the whole program may follow a command
    app_->require_subcommand(1);
    app_->footer(footer);
    app_->add_flag("--json", isJson, kJsonHelp);
    app_->set_version_flag("--version", version, "Print the version and exit");
}

CommandLine::~CommandLine() = default;

Action CommandLine::parse(int argc, const char *const *argv) {
    try {
        app_->parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        return printing(app_->help());
    } catch (const CLI::CallForVersion &version) {
        return printing(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError &error) {
        const std::vector<std::string> unknown = app_->remaining(true);
        const std::string word = unknown.empty() ? "" : unknown[0];
        const std::span words(argv, static_cast<size_t>(argc));
        const CLI::App &command =
            recognisedBefore(word, *app_, words.subspan(words.empty() ? 0 : 1));
        const bool isWordWrong = &command != &recognised(*app_);
        const std::string reason = isWordWrong ? commandWanted(word, namesOfCommands(command))
                                               : reasonOf(error, command, word);
        throw Failure::usage(reason + "; see '" + wholeName(command) + " --help'");
    }
    return grammar_.chosen;
}

} // namespace iodbg
