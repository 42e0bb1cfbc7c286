// The manual pages against what the programs say of themselves.

#include "command_line/man_page.h"
#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"

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
    size_t count = 0;
    for (const std::string &line : linesOf(printed(GetParam(), {"--help"}))) {
        const Words words = wordsOf(line);
        const bool isCode = words.size() > 1 && line.starts_with("  ") && words[0].size() == 1 &&
                            words[0][0] >= '0' && words[0][0] <= '9';
        if (!isCode)
            continue;
        ++count;
        EXPECT_NE(codes.find(".It " + words[0] + "\n"), std::string::npos) << line;
    }
    EXPECT_GT(count, 3u);
    EXPECT_EQ(codes.find(".It " + std::to_string(count) + "\n"), std::string::npos);
}

TEST_P(ManPageTest, IsPrintedByTheProgram) {
    command_line::Tool tool = GetParam().make();
    EXPECT_EQ(run({builtProgram(GetParam().name), "__man-page"}).out,
              command_line::manPageOf(tool));
}

INSTANTIATE_TEST_SUITE_P(Programs, ManPageTest, ::testing::Values(kIodbgTool, kVboardTool),
                         [](const auto &tool) { return tool.param.name; });

} // namespace
