#pragma once
// What changes from one round of `iodbg watch` to the next.

#include "iodbg/unit/watch_round.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace iodbg {

/** A value, or the judgement of something, that is another now. */
struct ValueChange {
    std::string item; // "fans.1.speed_rpm", "findings.fan 1"
    Cell before;
    Cell after;
    Severity severity; // of what is found now
};

/** What is found of a subject. The words tell measured values, which are no matter of their own. */
struct SubjectJudgement {
    std::string text;
    std::vector<std::pair<Code, std::optional<Subject>>> found = {}; // and what it hangs on
    Severity severity = Severity::Good;
};

class ChangeWatch {
  public:
    /**
     * What has changed since the round before; of what is measured, by more than it
     * wavers. A value is known from the first round on that has
     * it, and until another one comes; what is found is told from the first round on.
     */
    std::vector<ValueChange> take(const Round &round);

    /** How many values are known. */
    size_t size() const { return values_.size(); }

  private:
    void takeValue(std::vector<ValueChange> &changes, const std::string &item, const Cell &cell);
    void takeSection(std::vector<ValueChange> &changes, const Section &section);
    void takeTable(std::vector<ValueChange> &changes, const Table &table);
    void takeFindings(std::vector<ValueChange> &changes, const Findings &findings);

    std::map<std::string, Cell> values_;
    std::map<std::string, SubjectJudgement> found_;
};

} // namespace iodbg
