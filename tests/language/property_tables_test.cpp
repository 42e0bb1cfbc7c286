// The tables of properties in the documents are those of the language. scripts/document-tables
// renews them.

#include "language/captured_properties.h"
#include "language/property_names.h"
#include "language/property_values.h"
#include "tests/support/document_part.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace language;

std::string joinedWith(const std::vector<std::string> &words, const std::string &around) {
    std::string text;
    for (const std::string &word : words) {
        text += text.empty() ? "" : ", ";
        text += around;
        text += word;
        text += around;
    }
    return text;
}

/** What a property holds and can be set to, its words between marks. */
std::string valueTold(const Property &property, const std::string &around) {
    std::string text = joinedWith(wordsOf(property.words), around);
    const std::string whole = rangeText(property);
    const std::string words = property.words;
    std::string rest = whole.substr(words.size(), whole.find("; set: ") - words.size());
    if (rest.starts_with(", or "))
        rest = (property.type == Type::Number || property.type == Type::Decimal ? ", or " : ", ") +
               rest.substr(5);
    if (property.type == Type::Text || property.type == Type::Time ||
        property.type == Type::MacAddress) {
        const size_t form = rest.starts_with(", ") ? 2 : 0;
        rest = rest.substr(0, form) + around + rest.substr(form) + around;
    }
    text += rest;
    if (*property.given != '\0')
        text += "; set: " + joinedWith(wordsOf(property.given), around);
    return text;
}

std::string modelsTold(const Property &property) {
    const std::string models = modelsText(property.subject);
    return models == "all" ? "" : models;
}

std::string markdownTable() {
    std::string text = "| name | value | set | models | |\n|---|---|---|---|---|\n";
    for (const Property &property : properties()) {
        for (const std::string &cell :
             {"`" + std::string(property.name) + "`", valueTold(property, "`"),
              std::string(property.isSettable ? "yes" : ""), modelsTold(property),
              std::string(property.sentence)}) {
            text += cell.empty() ? "| " : "| " + cell + " ";
        }
        text += "|\n";
    }
    return text;
}

/** Text in lines that are no longer than manual pages have them. */
std::string filled(const std::string &text) {
    constexpr size_t kLongest = 78;
    std::istringstream words(text);
    std::string lines;
    size_t column = 0;
    for (std::string word; words >> word;) {
        const bool isFirst = lines.empty();
        const bool fits = column + 1 + word.size() <= kLongest;
        lines += isFirst ? "" : fits ? " " : "\n";
        column = isFirst || !fits ? word.size() : column + 1 + word.size();
        lines += word;
    }
    return lines + "\n";
}

std::string manualEntries() {
    std::string text;
    for (const Property &property : properties()) {
        const std::string models = modelsTold(property);
        text += ".It Ql " + std::string(property.name) + "\n";
        text +=
            filled("Holds " + valueTold(property, "") + (property.isSettable ? "" : "; read only") +
                   (models.empty() ? "" : "; on models " + models) + ".");
        text += filled(std::string(property.sentence) + ".");
    }
    return text;
}

/** What two units may differ by. */
std::string toleranceTold(const CapturedProperty &row) {
    std::string text = row.tolerance != 0 ? std::to_string(row.tolerance) : "";
    if (row.percent != 0)
        text += (text.empty() ? "" : " or ") + std::to_string(row.percent) + " %";
    return text;
}

std::string capturedNameTold(const CapturedProperty &row) {
    const std::string name = "`" + std::string(row.name) + "`";
    if (row.firstNumber == 0 && row.lastNumber == UINT32_MAX)
        return name;
    return name + ", " + std::to_string(row.firstNumber) +
           (row.lastNumber == UINT32_MAX ? " on" : "-" + std::to_string(row.lastNumber));
}

std::string capturedValueTold(const CapturedProperty &row) {
    constexpr const char *kTypes[] = {"number", "number", "number", "word", "text",
                                      "text",   "text",   "text",   "bytes"};
    std::string text = joinedWith(wordsOf(row.words), "`");
    if (row.type != Type::Word)
        text = kTypes[static_cast<size_t>(row.type)] + (text.empty() ? "" : ", or " + text);
    return text + (*row.unit != '\0' ? ", " + std::string(row.unit) : "");
}

std::string capturedTable() {
    std::string text = "| name | value | compared | models | |\n|---|---|---|---|---|\n";
    for (const CapturedProperty &row : capturedProperties()) {
        const std::string tolerance = toleranceTold(row);
        const std::string models = modelsText(row.subject);
        const std::string raw = *row.raw != '\0' ? "; raw: " + std::string(row.raw) : "";
        for (const std::string &cell :
             {capturedNameTold(row), capturedValueTold(row),
              comparedWord(row.compared) + (tolerance.empty() ? "" : ", " + tolerance),
              models == "all" ? std::string() : models, row.sentence + raw})
            text += cell.empty() ? "| " : "| " + cell + " ";
        text += "|\n";
    }
    return text;
}

struct Table {
    const char *file;
    const char *start, *end; // lines around it
    std::string (*content)();
};

void PrintTo(const Table &table, std::ostream *out) {
    *out << table.file;
}

class PropertyTablesTest : public ::testing::TestWithParam<Table> {};

TEST_P(PropertyTablesTest, AreWhatTheLanguageHas) {
    const auto &[file, start, end, content] = GetParam();
    expectPart({std::string(BSP_TEST_DOCUMENTS) + "/" + file, start, end}, content());
}

INSTANTIATE_TEST_SUITE_P(
    Documents, PropertyTablesTest,
    ::testing::Values(Table{"virtual-board.md", "<!-- the properties -->\n",
                            "<!-- end of the properties -->\n", markdownTable},
                      Table{"captured-unit.md", "<!-- the captured properties -->\n",
                            "<!-- end of the captured properties -->\n", capturedTable},
                      Table{"man/vboard.1", ".\\\" the properties\n",
                            ".\\\" end of the properties\n", manualEntries}),
    [](const auto &table) {
        return std::string(table.index == 0 ? "Page" : table.index == 1 ? "Captures" : "Manual");
    });

} // namespace
