// What can go wrong with whose requests: the words of rules.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/words/fault_table.h"

namespace vboard::server {

namespace {

Json deviceJson(const vb::FaultTargetWords &target) {
    return {{"device", target.device},
            {"name", target.name},
            {"requests", target.requests},
            {"ops", vb::opsOf(target.target)},
            {"offset", target.offset != nullptr ? Json(target.offset) : Json()}};
}

Json effectJson(const vb::FaultEffectWords &effect) {
    Json uses = Json::array();
    for (const vb::FaultTargetWords &target : vb::kFaultTargets) {
        if (vb::findUse(target.target, effect.effect) != nullptr)
            uses.push_back(
                {{"device", target.device}, {"ops", vb::opsOf(target.target, effect.effect)}});
    }
    return {{"effect", effect.text},
            {"form", vb::formOf(effect)},
            {"sentence", effect.sentence},
            {"uses", uses}};
}

} // namespace

Response describeEffects(Services &, const Asked &) {
    Json devices = Json::array();
    for (const vb::FaultTargetWords &target : vb::kFaultTargets)
        devices.push_back(deviceJson(target));
    Json effects = Json::array();
    for (const vb::FaultEffectWords &effect : vb::kFaultEffects)
        effects.push_back(effectJson(effect));
    Json whens = Json::array();
    for (const auto &when : vb::kFaultWhens)
        whens.push_back(when.text);
    return jsonResponse({{"devices", devices}, {"effects", effects}, {"whens", whens}});
}

} // namespace vboard::server
