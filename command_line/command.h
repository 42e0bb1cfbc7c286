#pragma once
// A command of a tool, defined once: plain data, from which the parser, its help, the manual page
// and completion come.

#include "command_line/word.h"

#include <concepts>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace command_line {

/** Where a command's answer goes; a tool may have its own kind. */
class Output {
  public:
    Output() = default;
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;
    virtual ~Output() = default;

    virtual void printText(const std::string &text) const = 0;
};

/** What a command does once its words have been taken; its exit code. */
using Action = std::function<int(Output &)>;

/** What a command answers in place of what it does otherwise; nothing where it does that. */
using Detour = std::function<std::optional<int>(Output &)>;

/** The words behind "--" are a program's line; those before it that nobody knows are not. */
using ProgramTaker = std::function<void(const std::vector<std::string> &unknown,
                                        const std::vector<std::string> &line)>;

/** A part of the manual page, with what holds for all of its commands. */
struct Chapter {
    std::string title, text;
};

/** Words that a command knows, and what each of them means. What stands for something else in a
 * word is at its end, in capitals: "short=BYTES". */
struct Glossary {
    std::string title;
    std::vector<std::pair<std::string, std::string>> entries;
};

/** A command, or a group of commands. */
class Command {
  public:
    /** Completes a definition once its command is wanted. */
    using Define = std::function<void(Command &)>;

    Command(std::string ownName, std::string text, Define define = nullptr)
        : name(std::move(ownName)), help(std::move(text)), define_(std::move(define)) {}
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;
    ~Command() = default;

    /** Adds a group, which is nothing without one of its commands. */
    Command &group(const std::string &groupName, const std::string &groupHelp,
                   const Define &define = nullptr);
    /** Adds a command, which may have commands of its own. */
    Command &command(const std::string &commandName, const std::string &commandHelp,
                     const Define &define = nullptr);
    /** Begins a chapter of the manual page with the commands that are added from here on. */
    void chapter(const std::string &title, const std::string &text = "");

    /** Gives it another name. */
    Command &alias(const std::string &other);
    /** More sentences about it, which lists of commands leave out. */
    Command &detail(const std::string &sentences);
    /** What its options' words mean, below the options. */
    Command &glossary(const Glossary &added);
    /** A command line that shows its use. */
    Command &example(const std::string &line);
    /** What must hold before it, or a command of it, does anything; throws where it does not. */
    Command &onlyAfter(const std::function<void()> &condition);
    /** Asks for another answer first, before anything of what must hold is looked at. */
    Command &unless(const Detour &other);
    /** Takes a program's line behind "--". */
    Command &takesProgram(const ProgramTaker &taker);

    /** Takes what answers on the tool's own kind of output and gives an exit code, or what does
     * neither. */
    template <typename Work>
    Command &does(Work work) {
        action = [work](Output &output) {
            if constexpr (std::invocable<Work>) {
                work();
                return 0;
            } else {
                return static_cast<int>(work(AsOwn{output}));
            }
        };
        return *this;
    }

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
    /** The same with names for what its groups take: "vboard fault DIR add". */
    std::string call() const;
    std::vector<std::string> namesOfCommands() const;
    std::vector<const Word *> arguments() const;

    const std::string name, help;
    std::vector<std::string> aliases;
    std::string details;
    std::vector<Glossary> glossaries;
    std::vector<std::string> examples;
    const Command *parent = nullptr;
    bool isGroup = false;
    std::vector<Word> words;
    std::list<Command> commands;
    std::vector<Chapter> chapters;
    size_t inChapter = 0; // of its parent; chapters count from 1
    std::function<void()> check;
    Detour detour;
    ProgramTaker program;
    Action action;

  private:
    /** An output as what it is. */
    struct AsOwn {
        Output &output;

        template <std::derived_from<Output> Own>
        operator Own &() const {
            return static_cast<Own &>(output);
        }
    };

    Define define_;
};

} // namespace command_line
