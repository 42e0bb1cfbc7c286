#pragma once
// The definitions of the tools' commands, within the test's own process.

#include "command_line/line.h"

#include <iosfwd>
#include <string>
#include <vector>

/** A tool under its name. */
struct NamedTool {
    std::string name;
    command_line::Tool (*make)();
};

/** How messages and lists of tests show it. */
void PrintTo(const NamedTool &tool, std::ostream *stream);

command_line::Tool iodbgTool();

extern const NamedTool kIodbgTool, kVboardTool;

/** All commands of a tool, the whole of it first; each is completed. */
std::vector<const command_line::Command *> commandsOf(command_line::Tool &tool);

/** The words behind the program's that name a command, with a word for each argument of its groups.
 */
std::vector<std::string> callOf(const command_line::Command &command);

/** What an action prints that the words ask for. */
std::string printed(const NamedTool &named, const std::vector<std::string> &words);

/** Carries out what is refused; why it is, and whether as wrong usage. */
struct RefusedAction {
    std::string message;
    bool isWrongUsage;
};
RefusedAction refusedActionOf(const NamedTool &named, const std::vector<std::string> &words);

/** Why words are no command line of a tool; empty when they are one. Nothing is done. */
std::string refusalOf(const NamedTool &named, const std::vector<std::string> &words);
