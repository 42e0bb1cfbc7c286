// The manual pages against what the programs say of themselves.

#include "command_line/man_page.h"
#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"

#include <set>

namespace {

std::string readPage(const std::string &program) {
    return readFile(std::string(BSP_TEST_MAN_PAGES) + "/" + program + ".1");
}

class ManPageTest : public ::testing::TestWithParam<NamedTool> {};

/** scripts/man-pages renews it. */
TEST_P(ManPageTest, HasTheCommandsAsTheProgramPrintsThem) {
    const std::string page = readPage(GetParam().name);
    const size_t begin = page.find(".Sh COMMANDS\n");
    const size_t end = page.find("\n.Sh ", begin);
    ASSERT_NE(end, std::string::npos);
    command_line::Tool tool = GetParam().make();
    EXPECT_EQ(page.substr(begin, end + 1 - begin), command_line::manPageOf(tool))
        << "renew the page with scripts/man-pages";
}

TEST_P(ManPageTest, HasAllSectionsInTheirOrder) {
    Words sections;
    for (const std::string &line : linesOf(readPage(GetParam().name))) {
        if (line.starts_with(".Sh "))
            sections.push_back(line.substr(4));
    }
    Words expected = {"NAME",  "SYNOPSIS",    "DESCRIPTION", "COMMANDS", "ENVIRONMENT",
                      "FILES", "EXIT STATUS", "EXAMPLES",    "SEE ALSO"};
    if (GetParam().name == "vboard") {
        expected.insert(expected.begin() + 4, "PROPERTIES");
        expected.push_back("CAVEATS");
    }
    EXPECT_EQ(sections, expected);
}

/** The codes that help lists are the ones of the page. */
TEST_P(ManPageTest, HasEveryExitCode) {
    const std::string page = readPage(GetParam().name);
    const std::string codes = page.substr(page.find(".Sh EXIT STATUS"));
    const auto isDigit = [](const std::string &word) {
        return word.size() == 1 && word[0] >= '0' && word[0] <= '9';
    };
    std::set<std::string> listed, described;
    for (const std::string &line : linesOf(printed(GetParam(), {"--help"}))) {
        const Words words = wordsOf(line);
        if (words.size() > 1 && line.starts_with("  ") && isDigit(words[0]))
            listed.insert(words[0]);
    }
    for (const std::string &line : linesOf(codes)) {
        if (line.starts_with(".It ") && isDigit(line.substr(4)))
            described.insert(line.substr(4));
    }
    EXPECT_GT(listed.size(), 3u);
    EXPECT_EQ(described, listed);
}

TEST_P(ManPageTest, IsPrintedByTheProgram) {
    command_line::Tool tool = GetParam().make();
    EXPECT_EQ(run({builtProgram(GetParam().name), "__man-page"}).out,
              command_line::manPageOf(tool));
}

INSTANTIATE_TEST_SUITE_P(Programs, ManPageTest, ::testing::Values(kIodbgTool, kVboardTool),
                         [](const auto &tool) { return tool.param.name; });

} // namespace
