#include "iodbg/health.h"

#include "bsp.h"

#include <algorithm>

namespace iodbg {

namespace {

constexpr uint32_t kSlowPart = 4; // a fan that lacks this part of another's speed is failing

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

Finding absentFan(const Model &model, const std::string &name) {
    if (model.fansShareTachometer)
        return {name, Severity::Fault, "it or its neighbour is missing", "look which, plug it"};
    return {name, Severity::Fault, "not there", "plug it"};
}

Finding standingFan(const Model &model, const std::string &name) {
    if (model.fansShareTachometer)
        return {name, Severity::Fault, "it or its neighbour stands still",
                "look which, replace it"};
    return {name, Severity::Fault, "stands still or is not there", "plug it, or replace it"};
}

/** fastest: the speed of the fastest fan of the unit. All run at one level, so they are alike. */
Finding fanFinding(const Model &model, const std::string &name, const FanState &fan,
                   uint32_t fastest) {
    if (fan.status != BSP_OK)
        return unreadable(name, fan.status);
    // The library counts two on models of which nothing tells whether they have any.
    if (model.fanPresence == FanPresence::Unknown && fastest == 0)
        return good(name, "none seen");
    if (fan.isPresent == 0)
        return absentFan(model, name);
    if (fan.speed == 0)
        return standingFan(model, name);
    const std::string text = std::to_string(fan.speed) + " rpm";
    if (fan.speed < fastest / kSlowPart * (kSlowPart - 1))
        return {name, Severity::Fault, text + ", while the fastest has " + std::to_string(fastest),
                "replace it"};
    return good(name, text);
}

} // namespace

Findings fanFindings(const Model &model) {
    std::vector<FanState> fans;
    uint32_t fastest = 0;
    for (uint32_t fan = 1; fan <= model.fans; ++fan) {
        fans.push_back(readFan(model, fan));
        fastest = std::max(fastest, fans.back().speed);
    }
    Findings findings;
    for (uint32_t fan = 1; fan <= model.fans; ++fan)
        findings.push_back(fanFinding(model, "fan " + std::to_string(fan), fans[fan - 1], fastest));
    return findings;
}

} // namespace iodbg
