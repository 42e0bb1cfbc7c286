#pragma once
// The grammar of the command line: commands, their arguments, and what they do.

#include "iodbg/core/exit_code.h"
#include "iodbg/core/parse.h"

#include <functional>
#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace iodbg {

class Console;

/** What a command does once its arguments have been taken. */
using Action = std::function<ExitCode(Console &)>;

/** What all commands share. */
struct Grammar {
    Action chosen;
    bool &isJson; // whether the answer is for programs
};

/** A command, or a group of commands. */
class Command {
  public:
    /** Adds a group, which is nothing without one of its commands. */
    Command group(const std::string &name, const std::string &help) const;
    /** Adds a command, which may have commands of its own. Its help shows its examples. */
    Command command(const std::string &name, const std::string &help) const;
    /** The same one, whose commands end at once where the kernel module cannot be reached. */
    Command onKernelModule() const { return {app_, grammar_, true}; }
    /** Another name of this command. */
    const Command &alias(const std::string &name) const;

    /** Words by their position. */
    const Command &argument(const std::string &name, const std::string &help,
                            const Parser &parser) const;
    const Command &optionalArgument(const std::string &name, const std::string &help,
                                    const Parser &parser) const;
    const Command &optionalArguments(const std::string &name, const std::string &help,
                                     const Parser &parser) const;

    /** An option with one value: "--offset". */
    const Command &option(const std::string &name, const std::string &valueName,
                          const std::string &help, const Parser &parser) const;
    const Command &requiredOption(const std::string &name, const std::string &valueName,
                                  const std::string &help, const Parser &parser) const;
    const Command &flag(const std::string &name, const std::string &help, bool &target) const;

    void does(const Action &action) const;

  private:
    friend class CommandLine;
    Command(CLI::App &app, Grammar &grammar, bool needsKernelModule = false)
        : app_(app), grammar_(grammar), needsKernelModule_(needsKernelModule) {}

    CLI::App &app_;
    Grammar &grammar_;
    bool needsKernelModule_;
};

/** The whole program's command line. */
class CommandLine {
  public:
    CommandLine(const std::string &description, const std::string &footer,
                const std::string &version, bool &isJson);
    CommandLine(const CommandLine &) = delete;
    CommandLine &operator=(const CommandLine &) = delete;
    ~CommandLine();

    Command root() { return {*app_, grammar_}; }

    /** Takes the words apart; what the chosen command does, or the printing of help or version. */
    Action parse(int argc, const char *const *argv);

  private:
    std::unique_ptr<CLI::App> app_;
    Grammar grammar_;
};

} // namespace iodbg
