#pragma once
// What a program's --help says, command by command.

#include <string>
#include <vector>

/** An argument, an option or a command as help lists it. */
struct HelpEntry {
    std::string name;  // "LEVEL", "--every"
    std::string value; // what names an option's value: "SECONDS"; empty when it takes none
    std::string text;  // what is said of it
};

struct CommandHelp {
    std::vector<std::string> path; // "fan", "set"
    std::vector<std::string> call; // the same with a word for each argument of its groups
    std::vector<HelpEntry> arguments, options, commands; // without --help
    std::vector<std::string> examples;                   // command lines
    bool isGroup;                                        // does nothing without one of its commands
    std::string text;

    /** "fan set" */
    std::string name() const;
};

/** The help of a program's command; the program itself for an empty call. */
CommandHelp commandHelp(const std::string &program, const std::vector<std::string> &path,
                        const std::vector<std::string> &call);

/** The help of a program and of all its commands, at every depth. */
std::vector<CommandHelp> helpTree(const std::string &program);
