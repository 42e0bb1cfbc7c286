// The manual pages against what the programs say of themselves.

#include "tests/command_lines/help_tree.h"
#include "tests/iodbg/iodbg_test.h"

#include <algorithm>
#include <map>

namespace {

/** A command as its page describes it. */
struct Entry {
    Words arguments;
    std::map<std::string, bool> options; // and whether the page names a value for one

    bool operator==(const Entry &) const = default;
};

std::string readPage(const std::string &program) {
    return readFile(std::string(BSP_TEST_MAN_PAGES) + "/" + program + ".1");
}

bool isCapital(const std::string &word) {
    return std::all_of(word.begin(), word.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

/** Takes the options of a line of the page: "Fl -every Ar SECONDS". */
void addOptions(Entry &entry, const Words &line) {
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        const bool isLong = line[i].ends_with("Fl") && line[i + 1].size() > 2 &&
                            line[i + 1][0] == '-' && line[i + 1] != "-help";
        if (isLong)
            entry.options["-" + line[i + 1]] |= i + 2 < line.size() && line[i + 2] == "Ar";
    }
}

/** The words of a line that name its command, by the macro Cm. */
std::string commandIn(const Words &line) {
    std::string name;
    bool isCommand = false;
    for (const std::string &word : line) {
        const bool isMacro = word.size() == 2 && word[0] >= 'A' && word[0] <= 'Z';
        if (isMacro)
            isCommand = word == "Cm";
        else if (isCommand && word != "|")
            name += (name.empty() ? "" : " ") + word;
    }
    return name;
}

Words argumentsIn(const Words &line) {
    Words arguments;
    for (size_t i = 1; i + 1 < line.size(); ++i) {
        const bool isValue = i >= 2 && line[i - 2] == "Fl";
        if (line[i] == "Ar" && isCapital(line[i + 1]) && !isValue)
            arguments.push_back(line[i + 1]);
    }
    return arguments;
}

/** What a page says; options of the whole program are under the empty name. */
std::map<std::string, Entry> describedIn(const std::string &page) {
    std::map<std::string, Entry> entries;
    Entry *entry = &entries[""];
    bool isInCommands = false;
    for (const std::string &text : linesOf(page)) {
        const Words line = wordsOf(text);
        if (text == ".Sh COMMANDS")
            isInCommands = true;
        if (text == ".Sh ENVIRONMENT")
            return entries;
        if (isInCommands && text.starts_with(".It Cm ")) {
            entry = &entries[commandIn(line)];
            entry->arguments = argumentsIn(line);
        }
        if (text.starts_with("."))
            addOptions(*entry, line);
    }
    return entries;
}

/** What help says in the same form. A group that does nothing by itself needs no description. */
std::map<std::string, Entry> knownTo(const std::string &program) {
    std::map<std::string, Entry> entries;
    std::map<std::string, Words> groupArguments;
    for (const CommandHelp &help : helpTree(program)) {
        Words arguments;
        for (size_t depth = 0; depth < help.path.size(); ++depth) {
            std::string group;
            for (size_t i = 0; i < depth; ++i)
                group += (i == 0 ? "" : " ") + help.path[i];
            const Words &own = groupArguments[group];
            arguments.insert(arguments.end(), own.begin(), own.end());
        }
        Words own;
        for (const HelpEntry &argument : help.arguments)
            own.push_back(argument.name);
        groupArguments[help.name()] = own;
        if (help.isGroup && !help.path.empty())
            continue;
        arguments.insert(arguments.end(), own.begin(), own.end());
        Entry &entry = entries[help.name()];
        entry.arguments = arguments;
        for (const HelpEntry &option : help.options)
            entry.options[option.name] = !option.value.empty();
    }
    // What the whole program takes as well is described once.
    for (auto &[name, entry] : entries) {
        for (const auto &[option, hasValue] : entries.at("").options)
            name.empty() || entry.options.erase(option);
    }
    return entries;
}

class ManPageTest : public ::testing::TestWithParam<const char *> {};

TEST_P(ManPageTest, HasEveryCommandArgumentAndOptionAndNoOther) {
    const auto described = describedIn(readPage(GetParam()));
    const auto known = knownTo(GetParam());
    EXPECT_GT(known.size(), 10u);
    for (const auto &[name, entry] : known) {
        ASSERT_TRUE(described.contains(name)) << "the page lacks '" << name << "'";
        EXPECT_EQ(described.at(name).arguments, entry.arguments) << name;
        EXPECT_EQ(described.at(name).options, entry.options) << name;
    }
    for (const auto &[name, entry] : described)
        EXPECT_TRUE(known.contains(name)) << "the program does not know '" << name << "'";
}

TEST_P(ManPageTest, HasAllSectionsInTheirOrder) {
    Words sections;
    for (const std::string &line : linesOf(readPage(GetParam()))) {
        if (line.starts_with(".Sh "))
            sections.push_back(line.substr(4));
    }
    Words expected = {"NAME",  "SYNOPSIS",    "DESCRIPTION", "COMMANDS", "ENVIRONMENT",
                      "FILES", "EXIT STATUS", "EXAMPLES",    "SEE ALSO"};
    if (std::string(GetParam()) == "vboard") {
        expected.insert(expected.begin() + 4, "PROPERTIES");
        expected.push_back("CAVEATS");
    }
    EXPECT_EQ(sections, expected);
}

/** The codes that help lists are the ones of the page. */
TEST_P(ManPageTest, HasEveryExitCode) {
    const std::string page = readPage(GetParam());
    const std::string codes = page.substr(page.find(".Sh EXIT STATUS"));
    size_t count = 0;
    for (const std::string &line : linesOf(commandHelp(GetParam(), {}, {}).text)) {
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

INSTANTIATE_TEST_SUITE_P(Programs, ManPageTest, ::testing::Values("iodbg", "vboard"),
                         [](const auto &page) { return std::string(page.param); });

} // namespace
