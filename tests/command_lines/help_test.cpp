// The help of every command.

#include "tests/command_lines/help_tree.h"
#include "tests/support/process.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class HelpTest : public ::testing::TestWithParam<const char *> {};

TEST_P(HelpTest, EveryCommandExplainsItselfAndAllItsWords) {
    const std::vector<CommandHelp> tree = helpTree(GetParam()); // throws unless all succeed
    EXPECT_GT(tree.size(), 10u);
    for (const CommandHelp &help : tree) {
        EXPECT_GT(help.text.find('\n'), 2u) << help.name() << ": the first line says what it does";
        const std::string usage = "\nUsage: " + std::string(GetParam()) +
                                  (help.path.empty() ? "" : " ") + help.name() + " ";
        EXPECT_NE(help.text.find(usage), std::string::npos) << help.text;
        for (const auto *entries : {&help.arguments, &help.options, &help.commands}) {
            for (const HelpEntry &entry : *entries)
                EXPECT_GT(entry.text.size(), 2u) << help.name() << " " << entry.name;
        }
    }
}

TEST_P(HelpTest, TheShortOptionSaysTheSame) {
    const CommandHelp help = commandHelp(GetParam(), {}, {});
    EXPECT_EQ(run({builtProgram(GetParam()), "-h"}).out, help.text);
}

INSTANTIATE_TEST_SUITE_P(Programs, HelpTest, ::testing::Values("iodbg", "vboard"),
                         [](const auto &program) { return std::string(program.param); });

} // namespace
