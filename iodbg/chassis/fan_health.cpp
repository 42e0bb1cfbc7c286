#include "iodbg/chassis/health.h"

#include "bsp.h"
#include "iodbg/chassis/thresholds.h"

#include <algorithm>

namespace iodbg {

namespace {

struct FanState {
    int32_t status;
    uint32_t isPresent;
    uint32_t speed;
};

FanState readFan(const Model &model, uint32_t fan) {
    FanState state = {BSP_OK, 1, 0};
    if (model.fanPresence == FanPresence::OwnLine)
        state.status = ioFanPresentGet(static_cast<int32_t>(fan), &state.isPresent);
    if (state.status == BSP_OK)
        state.status = ioFanSpeedGet(fan, &state.speed);
    return state;
}

Finding absentFan(const Model &model, const Subject &fan) {
    if (model.fansShareTachometer)
        return {fan, Code::FanMissing, "it or its neighbour is missing", "look which, plug it"};
    return {fan, Code::FanMissing, "not there"};
}

Finding standingFan(const Model &model, const Subject &fan) {
    if (model.fansShareTachometer)
        return {fan, Code::FanStandsStill, "it or its neighbour stands still",
                "look which, replace it"};
    return {fan, Code::FanStandsStill, "stands still or is not there"};
}

/** fastest: the speed of the fastest fan of the unit. All run at one level, so they are alike. */
Finding fanFinding(const Model &model, const Subject &subject, const FanState &fan,
                   uint32_t fastest) {
    if (fan.status != BSP_OK)
        return unreadable(subject, fan.status);
    // The library counts two on models of which nothing tells whether they have any.
    if (model.fanPresence == FanPresence::Unknown && fastest == 0)
        return good(subject, "none seen");
    if (fan.isPresent == 0)
        return absentFan(model, subject);
    if (fan.speed == 0)
        return standingFan(model, subject);
    const std::string text = std::to_string(fan.speed) + " rpm";
    if (int64_t{fan.speed} * 100 < int64_t{fastest} * kSlowFanPercent)
        return {subject, Code::FanSlow,
                text + ", while the fastest has " + std::to_string(fastest)};
    return good(subject, text);
}

} // namespace

Findings fanFindings(const Model &model) {
    std::vector<FanState> fans;
    uint32_t fastest = 0;
    for (uint32_t fan = 1; fan <= model.fans; ++fan) {
        fans.push_back(readFan(model, fan));
        fastest = std::max(fastest, fans.back().speed);
    }
    // Fans share registers: one that cannot be read is one finding.
    const int32_t status = fans.front().status;
    if (status != BSP_OK && std::all_of(fans.begin(), fans.end(), [status](const FanState &fan) {
            return fan.status == status;
        }))
        return {unreadable({Unit::Fan}, status)};
    Findings findings;
    for (uint32_t fan = 1; fan <= model.fans; ++fan)
        findings.push_back(fanFinding(model, {Unit::Fan, fan}, fans[fan - 1], fastest));
    return findings;
}

} // namespace iodbg
