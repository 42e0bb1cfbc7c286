#pragma once
// What changes from one round of `iodbg watch` to the next.

#include "iodbg/unit/watch_round.h"

#include <map>
#include <string>
#include <vector>

namespace iodbg {

/** A value, or the judgement of something, that is another now. */
struct ValueChange {
    std::string item; // "fans.1.speed_rpm", "findings.fan 1"
    Cell before;
    Cell after;
    Severity severity; // of what is found now
};

class ChangeWatch {
  public:
    /**
     * What has changed since the round before. A value is known from the first round on that has
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
    std::map<std::string, std::string> found_;
};

} // namespace iodbg
