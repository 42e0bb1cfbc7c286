// The help of every command.

#include "tests/command_lines/definitions.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

namespace {

using command_line::Command;
using command_line::Tool;
using command_line::Word;

class HelpTest : public ::testing::TestWithParam<NamedTool> {
  protected:
    static std::string helpOf(const Command &command) {
        std::vector<std::string> words = callOf(command);
        words.emplace_back("--help");
        return printed(GetParam(), words);
    }
};

TEST_P(HelpTest, EveryCommandExplainsItselfAndAllItsWords) {
    Tool tool = GetParam().make();
    const auto commands = commandsOf(tool);
    EXPECT_GT(commands.size(), 10u);
    for (const Command *command : commands) {
        const std::string help = helpOf(*command);
        EXPECT_EQ(help.find(command->help.substr(0, command->help.find(' '))), 0u)
            << command->wholeName() << ": the first line says what it does";
        EXPECT_NE(help.find("\nUsage: " + command->call() + " "), std::string::npos) << help;
        EXPECT_GT(command->help.size(), 2u) << command->wholeName();
        for (const Word &word : command->words) {
            EXPECT_GT(word.help.size(), 2u) << command->wholeName() << " " << word.name;
            EXPECT_NE(help.find("\n  " + word.name), std::string::npos)
                << word.name << " is not in\n"
                << help;
        }
        for (const Command &next : command->commands)
            EXPECT_NE(help.find("\n  " + next.name), std::string::npos) << help;
    }
}

TEST_P(HelpTest, EveryCommandDoesSomethingOrHasOneThatDoes) {
    Tool tool = GetParam().make();
    for (const Command *command : commandsOf(tool)) {
        EXPECT_EQ(command->action == nullptr, command->isGroup) << command->wholeName();
        EXPECT_FALSE(command->isGroup && command->commands.empty()) << command->wholeName();
    }
}

TEST_P(HelpTest, EveryCommandShowsExamplesOfItself) {
    Tool tool = GetParam().make();
    for (const Command *command : commandsOf(tool)) {
        const std::string help = helpOf(*command);
        EXPECT_FALSE(command->examples.empty() && !command->isGroup) << command->wholeName();
        for (const std::string &example : command->examples) {
            EXPECT_NE(example.find(command->name), std::string::npos) << example;
            EXPECT_NE(help.find("\n  " + example + "\n"), std::string::npos) << help;
        }
    }
}

TEST_P(HelpTest, ExitCodesAreListedForTheProgramAlone) {
    Tool tool = GetParam().make();
    for (const Command *command : commandsOf(tool))
        EXPECT_EQ(helpOf(*command).find("Exit codes:") != std::string::npos,
                  command->parent == nullptr)
            << command->wholeName();
}

TEST_P(HelpTest, FitsOnAPage) {
    constexpr size_t kPageWidth = 80;
    Tool tool = GetParam().make();
    for (const Command *command : commandsOf(tool)) {
        const std::string help = helpOf(*command);
        const std::string page = help.substr(0, help.find("Examples:"));
        for (const std::string &line : linesOf(page))
            EXPECT_LE(line.size(), kPageWidth) << command->wholeName() << "\n" << line;
    }
}

TEST_P(HelpTest, TheShortOptionSaysTheSame) {
    EXPECT_EQ(printed(GetParam(), {"-h"}), printed(GetParam(), {"--help"}));
}

TEST_P(HelpTest, IsWhatTheProgramPrints) {
    const ProcessResult result = run({builtProgram(GetParam().name), "--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, printed(GetParam(), {"--help"}));
}

TEST(VboardHelpTest, IsThatOfACommandWhoseFolderIsMissing) {
    for (const auto &[group, command] :
         {std::pair{"fault", "add"}, std::pair{"flash", "mark-bad"}}) {
        const std::string whole = printed(kVboardTool, {group, "x", command, "--help"});
        const std::string usage =
            "Usage: vboard " + std::string(group) + " DIR " + command + " [OPTIONS]";
        EXPECT_NE(whole.find(usage), std::string::npos) << whole;
        EXPECT_EQ(printed(kVboardTool, {group, command, "--help"}), whole);
    }
}

TEST(IodbgHelpTest, NamesEveryExitCode) {
    const std::string help = printed(kIodbgTool, {"--help"});
    for (const char *line :
         {"\nExit codes:\n  0  done\n", "\n  1  the board or the library answered a failure\n",
          "\n  2  wrong usage, also a number that this board does not have, or not confirmed;\n",
          "\n  3  written, but what reads back differs; also a PoE port that was switched on\n     "
          "and stays off\n",
          "\n  4  a problem on this host: a file, standard output, memory\n",
          "\n  5  'check' found a fault of the unit\n"})
        EXPECT_NE(help.find(line), std::string::npos) << line << help;
}

INSTANTIATE_TEST_SUITE_P(Programs, HelpTest, ::testing::Values(kIodbgTool, kVboardTool),
                         [](const auto &tool) { return tool.param.name; });

} // namespace
