// The pages of the two programs against their commands.

#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace {

using command_line::Command;

std::string readDocument(const std::string &name) {
    return readFile(std::string(BSP_TEST_DOCUMENTS) + "/" + name);
}

/** The words of a text without their marks. */
Words plainWords(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '-'; }, ' ');
    return wordsOf(text);
}

struct Row {
    Words commands; // its first cell
    Words all;
};

std::vector<Row> tableBelow(const std::string &page, const std::string &head) {
    std::vector<Row> rows;
    const size_t start = page.find("\n" + head + "\n");
    EXPECT_NE(start, std::string::npos) << "there is no table " << head;
    for (const std::string &line : linesOf(page.substr(std::min(start, page.size())))) {
        if (line.starts_with("| "))
            rows.push_back({plainWords(line.substr(0, line.find(" | "))), plainWords(line)});
        else if (!rows.empty() && !line.starts_with('|'))
            break;
    }
    return rows;
}

bool hasWords(const Words &words, Words::const_iterator from, Words::const_iterator to) {
    return std::all_of(from, to, [&](const std::string &word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    });
}

/** Whether a row is about a command: its first cell has the first two words. */
bool isAbout(const Row &row, const Words &call) {
    const auto second = call.begin() + std::min<std::ptrdiff_t>(2, std::ssize(call));
    return hasWords(row.commands, call.begin(), second);
}

TEST(IodbgDocumentTest, TellsOfEachCommandAndItsKeys) {
    const std::string page = readDocument("iodbg.md");
    const std::vector<Row> uses = tableBelow(page, "| Command | What it does |");
    const std::vector<Row> keys = tableBelow(page, "| Command | Keys |");
    command_line::Tool tool = iodbgTool();
    for (const Command *command : commandsOf(tool)) {
        const Words call = callOf(*command);
        if (command->isGroup)
            continue;
        EXPECT_TRUE(std::any_of(uses.begin(), uses.end(),
                                [&](const Row &row) {
                                    return isAbout(row, call) &&
                                           hasWords(row.all, call.begin(), call.end());
                                }))
            << command->wholeName() << " has no row in the first table of docs/iodbg.md";
        EXPECT_TRUE(std::any_of(keys.begin(), keys.end(),
                                [&](const Row &row) { return isAbout(row, call); }))
            << command->wholeName() << " has no row in the table of keys in docs/iodbg.md";
    }
}

TEST(VboardDocumentTest, TellsOfEachCommand) {
    const std::string page = readDocument("virtual-board.md");
    command_line::Tool tool = kVboardTool.make();
    for (const Command *command : commandsOf(tool)) {
        if (command->parent != nullptr && command->parent->parent == nullptr) {
            EXPECT_NE(page.find(command->wholeName()), std::string::npos)
                << "docs/virtual-board.md does not tell of " << command->wholeName();
        }
    }
}

} // namespace
