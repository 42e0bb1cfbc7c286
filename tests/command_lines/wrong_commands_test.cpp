// A word that is no command, and a command that is missing, at every level.

#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"

namespace {

using command_line::Command;
using command_line::Tool;

Words with(Words call, const std::string &word) {
    call.push_back(word);
    return call;
}

/** All commands of one, as messages list them. */
std::string choicesOf(const Command &command) {
    std::string choices;
    for (const Command &next : command.commands)
        choices += (choices.empty() ? "" : "|") + next.name;
    return choices;
}

/** A group's call with its own arguments. */
Words wholeCallOf(const Command &command) {
    Words call = callOf(command);
    call.insert(call.end(), command.arguments().size(), "x");
    return call;
}

class WrongCommandsTest : public ::testing::TestWithParam<NamedTool> {};

TEST_P(WrongCommandsTest, EveryLevelNamesItsCommands) {
    Tool tool = GetParam().make();
    size_t groups = 0;
    for (const Command *command : commandsOf(tool)) {
        if (command->commands.empty())
            continue;
        ++groups;
        const std::string where = "; see '" + command->wholeName() + " --help'";
        const std::string choices = choicesOf(*command);
        const Words call = wholeCallOf(*command);
        EXPECT_EQ(refusalOf(GetParam(), with(call, "xyzzy")),
                  "'xyzzy' is none of " + choices + where);
        EXPECT_EQ(refusalOf(GetParam(), call),
                  command->isGroup ? "a command is missing: give one of " + choices + where : "");
    }
    EXPECT_GT(groups, 2u);
}

TEST_P(WrongCommandsTest, UnknownOptionsAreNamed) {
    const std::string name = GetParam().name;
    EXPECT_EQ(refusalOf(GetParam(), {"--foo"}),
              "'--foo' is not known here; see '" + name + " --help'");
    Tool tool = GetParam().make();
    for (const Command *command : commandsOf(tool)) {
        if (command->program) // takes them for the program's
            continue;
        const std::string refusal = refusalOf(GetParam(), with(callOf(*command), "--foo"));
        EXPECT_NE(refusal.find("--foo"), std::string::npos)
            << command->wholeName() << ": " << refusal;
    }
}

INSTANTIATE_TEST_SUITE_P(Programs, WrongCommandsTest, ::testing::Values(kIodbgTool, kVboardTool),
                         [](const auto &tool) { return tool.param.name; });

TEST(WrongIodbgCommandsTest, WhatIsMeantIsGuessedWhereItIsClose) {
    const struct {
        Words words;
        std::string guess;
    } rows[] = {
        {{"shwo"}, "show"},
        {{"poe", "satus"}, "status"},
        {{"--json", "poe", "satus"}, "status"},
        {{"sfp", "--json", "lst"}, "list"},
        {{"led", "set", "lamp6"}, "lamp4"},
        {{"poe", "st"}, "status"},   // begins with it, though "set" is nearer
        {{"upgrade", "os.img"}, ""}, // far from each
        {{"led", "blink"}, ""},
        {{"i2c", "x"}, ""},
        {{std::string(5000, 'x')}, ""},
    };
    for (const auto &row : rows) {
        const std::string refusal = refusalOf(kIodbgTool, row.words);
        const size_t guess = refusal.find(" (did you mean '" + row.guess + "'?); see 'iodbg ");
        EXPECT_EQ(guess == std::string::npos, row.guess.empty()) << refusal;
        EXPECT_EQ(refusal.find("did you mean") == std::string::npos, row.guess.empty()) << refusal;
    }
}

TEST(WrongIodbgCommandsTest, AWrongWordBeforeAnotherCommandsIsJudgedWhereItStands) {
    const struct {
        Words words;
        std::string wrong, guess, command;
    } rows[] = {
        {{"peo", "status"}, "peo", "", "iodbg"},
        {{"poee", "init"}, "poee", "poe", "iodbg"},
        {{"--json", "peo", "status", "1-3"}, "peo", "", "iodbg"},
        {{"flash", "show"}, "flash", "", "iodbg"},
        {{"led", "set", "sytem", "1"}, "sytem", "system", "iodbg led set"}, // "1" is system's too
        {{"led", "set", "sytem", "1", "99"}, "sytem", "system", "iodbg led set"},
        {{"poe", "poe", "status"}, "poe", "", "iodbg poe"},
    };
    for (const auto &row : rows) {
        const std::string refusal = refusalOf(kIodbgTool, row.words);
        EXPECT_EQ(refusal.find("'" + row.wrong + "' is none of "), 0u) << refusal;
        const std::string guess = row.guess.empty() ? "" : " (did you mean '" + row.guess + "'?)";
        EXPECT_TRUE(refusal.ends_with(guess + "; see '" + row.command + " --help'")) << refusal;
    }
}

TEST(WrongIodbgCommandsTest, WordsTooManyAreNamed) {
    EXPECT_EQ(refusalOf(kIodbgTool, {"show", "now"}),
              "The following argument was not expected: now; see 'iodbg show --help'");
}

class WrongProgramTest : public IodbgTest {};

TEST_F(WrongProgramTest, TheProgramSaysItAndEndsWithCode2) {
    expectRefusal({"poe", "satus"}, 2, "'satus' is none of status|info|");
    expectRefusal({}, 2, "a command is missing: give one of show|check|");
}

} // namespace
