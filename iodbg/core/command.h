#pragma once
// A command of a tool, defined once: plain data, from which the parser, its help, the manual page
// and completion come.

#include "iodbg/core/exit_code.h"
#include "iodbg/core/parse.h"

#include <functional>
#include <list>
#include <string>
#include <vector>

namespace iodbg {

class Console;

/** What a command does once its words have been taken. */
using Action = std::function<ExitCode(Console &)>;

/** A word that a command takes: by its position, or an option, with a value or without. */
struct Word {
    enum class Kind { Argument, Option, Flag };

    Kind kind;
    std::string name;      // "LEVEL", "--every"
    std::string valueName; // of an option: "SECONDS"
    std::string help;
    Parser parser;        // of arguments and options
    bool *flag = nullptr; // of flags
    bool isRequired = false;
    bool isMany = false; // takes all the arguments that follow
};

/** A command, or a group of commands. */
class Command {
  public:
    /** Completes a definition once its command is wanted. */
    using Define = std::function<void(Command &)>;

    Command(const std::string &ownName, const std::string &text) : name(ownName), help(text) {}

    /** Adds a group, which is nothing without one of its commands. */
    Command &group(const std::string &groupName, const std::string &groupHelp,
                   const Define &define = nullptr);
    /** Adds a command, which may have commands of its own. */
    Command &command(const std::string &commandName, const std::string &commandHelp,
                     const Define &define = nullptr);
    /** Gives it another name. */
    Command &alias(const std::string &other);
    /** What must hold before it, or a command of it, does anything; throws where it does not. */
    Command &onlyAfter(const std::function<void()> &check);
    Command &does(const Action &what);

    /** Words by their position. */
    Word &argument(const std::string &word, const std::string &text, const Parser &parser);
    Word &optionalArgument(const std::string &word, const std::string &text, const Parser &parser);
    Word &optionalArguments(const std::string &word, const std::string &text, const Parser &parser);

    /** An option with one value: "--offset". */
    Word &option(const std::string &word, const std::string &valueName, const std::string &text,
                 const Parser &parser);
    Word &requiredOption(const std::string &word, const std::string &valueName,
                         const std::string &text, const Parser &parser);
    Word &flag(const std::string &word, const std::string &text, bool &target);

    /** Completes the definition, if that has not been done. */
    void complete();

    bool isCalled(const std::string &word) const;
    /** "iodbg cpld set" */
    std::string wholeName() const;
    std::vector<std::string> namesOfCommands() const;

    const std::string name, help;
    std::vector<std::string> aliases;
    const Command *parent = nullptr;
    bool isGroup = false;
    std::vector<Word> words;
    std::list<Command> commands;
    std::function<void()> check;
    Action action;

  private:
    Command &add(Command command, const Define &define);

    Define define_;
};

} // namespace iodbg
