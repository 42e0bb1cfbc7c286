// The only file that needs the parser library of command lines.

#include "iodbg/command_line.h"

#include "iodbg/console.h"
#include "iodbg/device_node.h"
#include "iodbg/failure.h"

#include <CLI/CLI.hpp>

namespace iodbg {

namespace {

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

/** The words of the command that was recognised: "iodbg cpld set". */
std::string recognisedCommand(const CLI::App &app) {
    std::string words = app.get_name();
    for (const CLI::App *command : app.get_subcommands())
        words += " " + recognisedCommand(*command);
    return words;
}

/** What is wrong. A word that nobody knows says more than the one that is missing for it. */
std::string reasonOf(const CLI::ParseError &error, const CLI::App &app) {
    const std::vector<std::string> unknown = app.remaining(true);
    const bool isMissing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    return isMissing && !unknown.empty() ? "'" + unknown[0] + "' is not known here" : error.what();
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
    return {*app, chosen_, needsKernelModule_};
}

Command Command::command(const std::string &name, const std::string &help) const {
    return {*app_.add_subcommand(name, help), chosen_, needsKernelModule_};
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
    app_.callback([&app = app_, &chosen = chosen_, whole] {
        if (app.get_subcommands().empty()) // else one of its own commands has been chosen
            chosen = whole;
    });
}

CommandLine::CommandLine(const std::string &description, const std::string &footer,
                         const std::string &version)
    : app_(std::make_unique<CLI::App>(description, "iodbg")) {
    app_->fallthrough(); // options of the whole program may follow a command
    app_->require_subcommand(1);
    app_->footer(footer);
    app_->set_version_flag("--version", version, "Print the version and exit");
}

CommandLine::~CommandLine() = default;

bool CommandLine::hasCommand(const std::string &group, const std::string &name) const {
    const auto isNamed = [&name](const CLI::App *command) { return command->get_name() == name; };
    return !app_->get_subcommand(group)->get_subcommands(isNamed).empty();
}

Action CommandLine::parse(int argc, const char *const *argv) {
    try {
        app_->parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        return printing(app_->help());
    } catch (const CLI::CallForVersion &version) {
        return printing(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError &error) {
        throw Failure::usage(reasonOf(error, *app_) + "; see '" + recognisedCommand(*app_) +
                             " --help'");
    }
    return chosen_;
}

} // namespace iodbg
