#include "iodbg/unit/changes.h"

#include "bsp.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace iodbg {

namespace {

/** Values that change by themselves, and so tell nothing. */
constexpr const char *kRestless[] = {"clock.chip", "clock.system", "poe.ports_asked"};

/** What is measured, and how far from what was told last it is still the same. */
struct MeasuredItem {
    const char *beginning, *end; // of the item's path
    int64_t tolerance;
};
constexpr MeasuredItem kMeasured[] = {
    {"climate.", "temperature_c", 1},
    {"fans.", "speed_rpm", BSP_FAN_STEP_RPM}, // what the tachometers count in
    {"poe.", "drawn_mw", 500},
    {"clock.", "drift_s", 1}, // the two clocks' seconds do not begin together
};

constexpr char kPortsAsked[] = "ports_asked";
constexpr char kPortsOn[] = "poe.ports_on";

bool isRestless(const std::string &item) {
    return std::find(std::begin(kRestless), std::end(kRestless), item) != std::end(kRestless);
}

int64_t toleranceOf(const std::string &item) {
    for (const MeasuredItem &row : kMeasured) {
        if (item.starts_with(row.beginning) && item.ends_with(row.end))
            return row.tolerance;
    }
    return 0;
}

bool isSame(const std::string &item, const Cell &one, const Cell &other) {
    const auto *first = std::get_if<int64_t>(&one.value);
    const auto *second = std::get_if<int64_t>(&other.value);
    if (first != nullptr && second != nullptr)
        return std::max(*first, *second) - std::min(*first, *second) <= toleranceOf(item);
    return one.value == other.value && (one.value != Value() || one.text == other.text);
}

std::map<std::string, SubjectJudgement> judgementsOf(const Findings &findings) {
    std::map<std::string, SubjectJudgement> all;
    for (const Finding &finding : findings) {
        SubjectJudgement &judgement = all[finding.subject.name()];
        judgement.text += (judgement.text.empty() ? "" : "; ") +
                          std::string(severityKey(finding.severity())) + ": " + finding.text;
        judgement.found.emplace_back(finding.code, finding.cause);
        judgement.severity = std::max(judgement.severity, finding.severity());
    }
    return all;
}

constexpr char kGoodText[] = "good";

} // namespace

void ChangeWatch::takeValue(std::vector<ValueChange> &changes, const std::string &item,
                            const Cell &cell) {
    const auto [known, isNew] = values_.emplace(item, cell);
    if (isNew || isSame(item, known->second, cell))
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
        const std::string item = section.path(kPortsAsked);
        const auto before = values_.find(item);
        isTourWhole = before != values_.end() && isSame(item, before->second, asked->cell);
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
    std::map<std::string, SubjectJudgement> now = judgementsOf(findings);
    const auto tell = [&changes](const std::string &subject, const std::string &before,
                                 const SubjectJudgement &after) {
        changes.push_back(
            {"findings." + subject, textCell(before), textCell(after.text), after.severity});
    };
    for (const auto &[subject, judgement] : found_) {
        if (!now.contains(subject))
            tell(subject, judgement.text, {kGoodText});
    }
    for (const auto &[subject, judgement] : now) {
        const auto before = found_.find(subject);
        if (before == found_.end() || before->second.found != judgement.found)
            tell(subject, before == found_.end() ? kGoodText : before->second.text, judgement);
    }
    found_ = std::move(now);
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
