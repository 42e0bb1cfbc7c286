// A word that is no command, and a command that is missing, at every level of iodbg's.

#include "tests/command_lines/help_tree.h"
#include "tests/iodbg/iodbg_test.h"

namespace {

class WrongCommandsTest : public IodbgTest {
  protected:
    /** All commands of a help, as messages list them. */
    static std::string choicesOf(const CommandHelp &help) {
        std::string choices;
        for (const HelpEntry &command : help.commands)
            choices += (choices.empty() ? "" : "|") + command.name;
        return choices;
    }
    static Words with(Words call, const std::string &word) {
        call.push_back(word);
        return call;
    }
};

TEST_F(WrongCommandsTest, EveryLevelNamesItsCommands) {
    size_t groups = 0;
    for (const CommandHelp &help : helpTree("iodbg")) {
        if (help.commands.empty())
            continue;
        ++groups;
        const std::string where =
            "; see 'iodbg " + help.name() + (help.path.empty() ? "" : " ") + "--help'";
        const std::string choices = choicesOf(help);
        expectRefusal(with(help.call, "xyzzy"), 2, "'xyzzy' is none of " + choices + where);
        if (help.isGroup)
            expectRefusal(help.call, 2, "a command is missing: give one of " + choices + where);
    }
    EXPECT_GT(groups, 15u);
}

TEST_F(WrongCommandsTest, WhatIsMeantIsGuessedWhereItIsClose) {
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
        const ProcessResult result = iodbg(row.words);
        EXPECT_EQ(result.exitCode, 2);
        const size_t guess = result.err.find(" (did you mean '" + row.guess + "'?); see 'iodbg ");
        EXPECT_EQ(guess == std::string::npos, row.guess.empty()) << result.err;
        EXPECT_EQ(result.err.find("did you mean") == std::string::npos, row.guess.empty())
            << result.err;
    }
}

TEST_F(WrongCommandsTest, AWrongWordBeforeAnotherCommandsIsJudgedWhereItStands) {
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
        const ProcessResult result = iodbg(row.words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("'" + row.wrong + "' is none of "), std::string::npos)
            << result.err;
        const std::string guess = row.guess.empty() ? "" : " (did you mean '" + row.guess + "'?)";
        EXPECT_TRUE(result.err.ends_with(guess + "; see '" + row.command + " --help'\n"))
            << result.err;
    }
}

TEST_F(WrongCommandsTest, UnknownOptionsAreNamed) {
    expectRefusal({"--foo"}, 2, "'--foo' is not known here; see 'iodbg --help'");
    expectRefusal({"poe", "--foo"}, 2, "'--foo' is not known here; see 'iodbg poe --help'");
    expectRefusal({"show", "--foo"}, 2, "--foo; see 'iodbg show --help'");
    expectRefusal({"show", "now"}, 2, "now; see 'iodbg show --help'");
}

} // namespace
