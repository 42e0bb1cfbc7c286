#pragma once
// A trace that is sent to a board once more: when, and what is counted.

#include "language/trace_record.h"
#include "language/trace_replay.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vboard {

/** A request of a file, and where it stands there. */
struct RecordedRequest {
    size_t line;
    language::TraceRecord record;
};

/**
 * When requests are due on the board's clock: as long behind the first one as they were recorded,
 * in their order, and none before the sleep of its process is over. Where time is virtual, those
 * who look from outside see no sleep take its time.
 */
class ReplayTimes {
  public:
    explicit ReplayTimes(uint64_t startNs) : startNs_(startNs), dueNs_(startNs) {}

    uint64_t dueAt(const language::TraceRecord &record);

  private:
    static constexpr uint64_t kLongestSleepNs = 366ull * 86400 * 1000000000;

    uint64_t startNs_, dueNs_;
    uint64_t firstNs_ = 0;
    bool isBegun_ = false;
    std::map<int32_t, uint64_t> awake_; // by process: when its sleep is over
};

struct ReplayCount {
    uint64_t same = 0, different = 0;
    std::map<language::Variation, uint64_t> varying;
    std::map<language::NotSent, uint64_t> notSent;

    uint64_t varyingTotal() const;
    bool isPassed(bool isStrict) const;
};

/** The verdict for people and for programs. */
std::string replayText(const ReplayCount &count);
nlohmann::ordered_json replayJson(const ReplayCount &count, bool isPassed);

} // namespace vboard
