#pragma once
// The steps of a scenario's file.

#include "virtual_board/command/complaints.h"
#include "virtual_board/command/step_keys.h"
#include "virtual_board/command/step_names.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vboard {

/** Reads one step behind the other. */
class StepReader {
  public:
    explicit StepReader(Complaints &complaints) : complaints_(complaints), names_(complaints) {}

    Step read(const toml::table &table);

  private:
    struct Found {
        const StepKey *key;
        Place place;
    };

    void take(Step &step, const toml::key &key, const toml::node &node);
    const Found *found(std::string_view name) const;
    void judgeCompany();
    void findDeed(Step &step, const Place &start);
    void judgeMoment(const Step &step);

    Complaints &complaints_;
    std::vector<Found> keys_; // of the step
    bool hasUnknown_ = false; // a key of it, which may be what it was to do
    uint64_t lastAtNs_ = 0;
    StepNames names_;
};

} // namespace vboard
