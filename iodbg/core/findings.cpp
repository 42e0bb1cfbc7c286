#include "iodbg/core/findings.h"

#include "command_line/page.h"
#include "iodbg/core/status_table.h"

#include <algorithm>

namespace iodbg {

using namespace command_line;

namespace {

const char *severityText(Severity severity) {
    constexpr const char *kTexts[] = {"good", "not judged", "warning", "FAULT"};
    return kTexts[static_cast<size_t>(severity)];
}

/** Of the finding about what another hangs on; null for one that is not in the list. */
const Finding *findingOn(const Findings &findings, const Subject &subject) {
    const auto found =
        std::find_if(findings.begin(), findings.end(), [&subject](const Finding &finding) {
            return finding.subject == subject && finding.severity() != Severity::Good;
        });
    return found == findings.end() ? nullptr : &*found;
}

Cell causeCell(const Findings &findings, const Finding &finding) {
    const Finding *cause = finding.cause ? findingOn(findings, *finding.cause) : nullptr;
    return cause == nullptr ? Cell{"", nullptr} : textCell(rowOf(cause->code).key);
}

constexpr size_t kVerdictColumn = 16; // behind the longest subject
constexpr size_t kFoundColumn = 28;
constexpr size_t kNarrowest = 20; // for what was found

void addFinding(std::vector<FindingLine> &lines, const Finding &finding, size_t columns) {
    const std::string margin(kFoundColumn, ' ');
    const size_t room = std::max(columns, kFoundColumn + kNarrowest) - kFoundColumn;
    std::string begin =
        padded(padded(finding.subject.name(), kVerdictColumn) + severityText(finding.severity()),
               kFoundColumn);
    for (const std::string &line : linesWithin(finding.text, room)) {
        lines.push_back({begin + line, finding.severity()});
        begin = margin;
    }
    begin = margin + "> ";
    for (const std::string &line : linesWithin(finding.toDo(), room - 2)) {
        lines.push_back({begin + line, finding.severity()});
        begin = margin + "  ";
    }
}

} // namespace

std::string Subject::name() const {
    const UnitRow &row = rowOf(unit);
    if (index)
        return std::string(row.name) + " " + std::to_string(*index);
    return row.all != nullptr ? row.all : row.name;
}

const char *Subject::key() const {
    return rowOf(unit).key;
}

Severity Finding::severity() const {
    return rowOf(code).severity;
}

std::string Finding::toDo() const {
    return advice.empty() ? rowOf(code).advice : advice;
}

Finding good(const Subject &subject, const std::string &text) {
    return {subject, Code::Good, text};
}

Finding unreadable(const Subject &subject, int32_t status) {
    return {subject, Code::Unreadable,
            "cannot be read: " + nameAndNumber(status) + ", " + explain(status).meaning};
}

Finding silent(const Subject &subject, int32_t status) {
    return {subject, Code::NoAnswer, "does not answer: " + nameAndNumber(status)};
}

Finding notJudged(const Subject &subject, const Subject &cause) {
    return {subject, Code::NotJudged,
            "hangs on " + (cause.index ? "" : std::string("the ")) + cause.name(), "", cause};
}

int64_t countOf(const Findings &findings, Severity severity) {
    return std::count_if(findings.begin(), findings.end(), [severity](const Finding &finding) {
        return finding.severity() == severity;
    });
}

Table findingsTable(const Findings &findings) {
    Table table = {"findings",
                   {{"subject", ""},
                    {"verdict", ""},
                    {"found", ""},
                    {"advice", ""},
                    {"code", ""},
                    {"unit", ""},
                    {"index", ""},
                    {"cause", ""}},
                   {}};
    for (const Finding &finding : findings) {
        const std::string advice = finding.toDo();
        const std::optional<uint32_t> index = finding.subject.index;
        table.rows.push_back(
            {textCell(finding.subject.name()), textCell(severityKey(finding.severity())),
             textCell(finding.text), advice.empty() ? Cell{"", nullptr} : textCell(advice),
             textCell(rowOf(finding.code).key), textCell(finding.subject.key()),
             index ? numberCell(*index) : Cell{"", nullptr}, causeCell(findings, finding)});
    }
    return table;
}

std::vector<FindingLine> findingLines(const Findings &findings, size_t columns) {
    if (findings.empty())
        return {};
    std::vector<FindingLine> lines = {
        {padded(padded("SUBJECT", kVerdictColumn) + "VERDICT", kFoundColumn) + "FOUND, TO DO",
         Severity::Good}};
    for (const Finding &finding : findings)
        addFinding(lines, finding, columns);
    return lines;
}

} // namespace iodbg
