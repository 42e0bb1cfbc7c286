#include "iodbg/unit/changes.h"

#include <algorithm>
#include <iterator>

namespace iodbg {

namespace {

/** Values that change by themselves, and so tell nothing. */
constexpr const char *kRestless[] = {"clock.chip", "clock.system", "poe.ports_asked"};

constexpr char kPortsAsked[] = "ports_asked";
constexpr char kPortsOn[] = "poe.ports_on";

bool isRestless(const std::string &item) {
    return std::find(std::begin(kRestless), std::end(kRestless), item) != std::end(kRestless);
}

bool isSame(const Cell &one, const Cell &other) {
    return one.value == other.value && (one.value != Value() || one.text == other.text);
}

struct Judged {
    std::string text;
    Severity severity = Severity::Good;
};

/** What is found of each subject, in words. */
std::map<std::string, Judged> judgedOf(const Findings &findings) {
    std::map<std::string, Judged> all;
    for (const Finding &finding : findings) {
        Judged &judged = all[finding.subject.name()];
        judged.text += (judged.text.empty() ? "" : "; ") +
                       std::string(severityKey(finding.severity())) + ": " + finding.text;
        judged.severity = std::max(judged.severity, finding.severity());
    }
    return all;
}

constexpr char kGoodText[] = "good";

} // namespace

void ChangeWatch::takeValue(std::vector<ValueChange> &changes, const std::string &item,
                            const Cell &cell) {
    const auto [known, isNew] = values_.emplace(item, cell);
    if (isNew || isSame(known->second, cell))
        return;
    if (!isRestless(item))
        changes.push_back({item, known->second, cell, Severity::Good});
    known->second = cell;
}

void ChangeWatch::takeSection(std::vector<ValueChange> &changes, const Section &section) {
    // PoE ports are asked a few at a time: which are on is known when all have been asked.
    const auto asked = std::find_if(section.fields.begin(), section.fields.end(),
                                    [](const Field &field) { return field.key == kPortsAsked; });
    bool isTourWhole = true;
    if (asked != section.fields.end()) {
        const auto before = values_.find(section.path(kPortsAsked));
        isTourWhole = before != values_.end() && isSame(before->second, asked->cell);
    }
    for (const Field &field : section.fields) {
        const std::string item = section.path(field.key);
        if (isTourWhole || item != kPortsOn)
            takeValue(changes, item, field.cell);
    }
}

void ChangeWatch::takeTable(std::vector<ValueChange> &changes, const Table &table) {
    for (const std::vector<Cell> &row : table.rows) {
        for (size_t i = 1; i < row.size(); ++i)
            takeValue(changes, table.key + "." + row[0].text + "." + table.columns[i].key, row[i]);
    }
}

void ChangeWatch::takeFindings(std::vector<ValueChange> &changes, const Findings &findings) {
    const std::map<std::string, Judged> now = judgedOf(findings);
    const auto tell = [&changes](const std::string &subject, const std::string &before,
                                 const Judged &after) {
        changes.push_back(
            {"findings." + subject, textCell(before), textCell(after.text), after.severity});
    };
    for (const auto &[subject, text] : found_) {
        if (!now.contains(subject))
            tell(subject, text, {kGoodText});
    }
    for (const auto &[subject, judged] : now) {
        const auto before = found_.find(subject);
        if (before == found_.end() || before->second != judged.text)
            tell(subject, before == found_.end() ? kGoodText : before->second, judged);
    }
    found_.clear();
    for (const auto &[subject, judged] : now)
        found_.emplace(subject, judged.text);
}

std::vector<ValueChange> ChangeWatch::take(const Round &round) {
    std::vector<ValueChange> changes;
    takeFindings(changes, round.findings);
    for (const auto &part : round.report.parts) {
        if (const auto *section = std::get_if<Section>(&part))
            takeSection(changes, *section);
        else
            takeTable(changes, std::get<Table>(part));
    }
    return changes;
}

} // namespace iodbg
