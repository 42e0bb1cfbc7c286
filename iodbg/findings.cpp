#include "iodbg/findings.h"

#include "iodbg/status_table.h"

#include <algorithm>

namespace iodbg {

namespace {

const char *severityText(Severity severity) {
    switch (severity) {
    case Severity::Good:
        return "good";
    case Severity::Warning:
        return "warning";
    case Severity::Fault:
        return "FAULT";
    }
    return "?";
}

const char *severityKey(Severity severity) {
    return severity == Severity::Fault ? "fault" : severityText(severity);
}

} // namespace

Finding good(const std::string &subject, const std::string &text) {
    return {subject, Severity::Good, text, ""};
}

Finding unreadable(const std::string &subject, int32_t status) {
    const StatusText text = explain(status);
    return {subject, Severity::Fault,
            "cannot be read: " + nameAndNumber(status) + ", " + text.meaning, text.next};
}

int64_t countOf(const Findings &findings, Severity severity) {
    return std::count_if(findings.begin(), findings.end(), [severity](const Finding &finding) {
        return finding.severity == severity;
    });
}

Table findingsTable(const Findings &findings) {
    Table table = {
        "findings",
        {{"subject", "SUBJECT"}, {"verdict", "VERDICT"}, {"found", "FOUND"}, {"advice", "TO DO"}},
        {}};
    for (const Finding &finding : findings)
        table.rows.push_back(
            {textCell(finding.subject),
             {severityText(finding.severity), std::string(severityKey(finding.severity))},
             textCell(finding.text),
             finding.advice.empty() ? Cell{"", nullptr} : textCell(finding.advice)});
    return table;
}

} // namespace iodbg
