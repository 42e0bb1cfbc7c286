// The help of every command.

#include "tests/command_lines/help_tree.h"
#include "tests/support/process.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

/** How a command is called, with names for what its groups take. */
std::string callOf(const std::string &program, const CommandHelp &help,
                   const std::vector<CommandHelp> &tree) {
    std::string call = program;
    std::vector<std::string> path;
    for (const std::string &word : help.path) {
        const auto group = std::find_if(tree.begin(), tree.end(),
                                        [&](const CommandHelp &any) { return any.path == path; });
        for (const HelpEntry &argument : group->arguments)
            call += " " + argument.name;
        call += " " + word;
        path.push_back(word);
    }
    return call;
}

class HelpTest : public ::testing::TestWithParam<const char *> {};

TEST_P(HelpTest, EveryCommandExplainsItselfAndAllItsWords) {
    const std::vector<CommandHelp> tree = helpTree(GetParam()); // throws unless all succeed
    EXPECT_GT(tree.size(), 10u);
    for (const CommandHelp &help : tree) {
        EXPECT_GT(help.text.find('\n'), 2u) << help.name() << ": the first line says what it does";
        const std::string usage = "\nUsage: " + callOf(GetParam(), help, tree) + " ";
        EXPECT_NE(help.text.find(usage), std::string::npos) << help.text;
        for (const auto *entries : {&help.arguments, &help.options, &help.commands}) {
            for (const HelpEntry &entry : *entries)
                EXPECT_GT(entry.text.size(), 2u) << help.name() << " " << entry.name;
        }
    }
}

TEST_P(HelpTest, EveryCommandShowsExamplesOfItself) {
    for (const CommandHelp &help : helpTree(GetParam())) {
        if (help.isGroup)
            continue;
        EXPECT_FALSE(help.examples.empty()) << help.name();
        for (const std::string &example : help.examples) {
            EXPECT_NE(example.find(help.path.empty() ? GetParam() : help.path.back()),
                      std::string::npos)
                << help.name() << ": " << example;
        }
    }
}

TEST_P(HelpTest, ExitCodesAreListedForTheProgramAlone) {
    for (const CommandHelp &help : helpTree(GetParam()))
        EXPECT_EQ(help.text.find("Exit codes:") != std::string::npos, help.path.empty())
            << help.name();
}

TEST(VboardHelpTest, IsThatOfACommandWhoseFolderIsMissing) {
    const std::string program = builtProgram("vboard");
    for (const auto &[group, command] :
         {std::pair{"fault", "add"}, std::pair{"flash", "mark-bad"}}) {
        const ProcessResult whole = run({program, group, "x", command, "--help"});
        EXPECT_EQ(whole.exitCode, 0);
        const std::string usage =
            "Usage: vboard " + std::string(group) + " DIR " + command + " [OPTIONS]";
        EXPECT_NE(whole.out.find(usage), std::string::npos) << whole.out;
        EXPECT_EQ(run({program, group, command, "--help"}).out, whole.out);
    }
}

TEST(IodbgHelpTest, NamesEveryExitCode) {
    const std::string help = commandHelp("iodbg", {}, {}).text;
    for (const char *line :
         {"\nExit codes:\n  0  done\n", "\n  1  the board or the library answered a failure\n",
          "\n  2  wrong usage, also a number that this board does not have, or not confirmed;\n",
          "\n  3  written, but what reads back differs; also a PoE port that was switched on\n     "
          "and stays off\n",
          "\n  4  a problem on this host: a file, standard output, memory\n",
          "\n  5  'check' found a fault of the unit\n"})
        EXPECT_NE(help.find(line), std::string::npos) << line << help;
}

TEST(IodbgHelpTest, FitsOnAPage) {
    constexpr size_t kPageWidth = 80;
    for (const CommandHelp &help : helpTree("iodbg")) {
        for (const std::string &line : linesOf(help.text))
            EXPECT_LE(line.size(), kPageWidth) << help.name() << "\n" << line;
    }
}

TEST_P(HelpTest, TheShortOptionSaysTheSame) {
    const CommandHelp help = commandHelp(GetParam(), {}, {});
    EXPECT_EQ(run({builtProgram(GetParam()), "-h"}).out, help.text);
}

INSTANTIATE_TEST_SUITE_P(Programs, HelpTest, ::testing::Values("iodbg", "vboard"),
                         [](const auto &program) { return std::string(program.param); });

} // namespace
