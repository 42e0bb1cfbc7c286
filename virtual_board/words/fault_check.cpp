#include "virtual_board/words/fault_check.h"

#include "virtual_board/devices/board_map.h"
#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

#include <utility>

namespace vb {

namespace {

using Targets = std::vector<const FaultTargetWords *>;

/** The targets for which something holds: the neighbours of one, where it holds for any of them. */
template <typename Holds>
Targets insteadOf(const FaultTargetWords &target, Holds holds) {
    Targets neighbours, all;
    for (const FaultTargetWords &other : kFaultTargets) {
        if (!holds(other))
            continue;
        all.push_back(&other);
        if (target.neighbours.has(other.target))
            neighbours.push_back(&other);
    }
    return neighbours.empty() ? all : neighbours;
}

/** What to give for a target in the place of another: of the buses, the controller is on one. */
std::string deviceFor(const FaultTargetWords &other, const FaultTargetWords &target) {
    const bool isItsBus = target.target == FaultTarget::Poe && other.target == FaultTarget::I2c;
    return isItsBus
               ? i2cDeviceText(kPoeController.bus, kPoeController.channel, kPoeController.device)
               : other.device;
}

/** Devices with which the rule would be one; empty when there are none. */
std::string otherDevices(const FaultRule &rule, const FaultTargetWords &target) {
    std::vector<std::string> devices;
    for (const auto *other : insteadOf(target, [&rule](const FaultTargetWords &any) {
             const FaultUse *use = findUse(any.target, rule.effect);
             return use != nullptr && use->ops.has(rule.op);
         }))
        devices.push_back(deviceFor(*other, target));
    return devices.empty() ? "" : "--device " + listed(devices, "or");
}

/** Operations with which requests to a target can have an effect, in few words. */
std::string opsText(FaultTarget target, FaultEffect effect) {
    if (findUse(target, effect)->ops.has(FaultOp::Any))
        return wordOf(kFaultOps, FaultOp::Any);
    return listed(opsOf(target, effect), "or");
}

/** The same with operations that go with the effect there. */
std::string otherDevicesAndOps(const FaultRule &rule, const FaultTargetWords &target) {
    std::vector<std::pair<std::string, std::vector<std::string>>> devicesOfOps;
    for (const auto *other : insteadOf(target, [&rule](const FaultTargetWords &any) {
             return findUse(any.target, rule.effect) != nullptr;
         })) {
        const std::string ops = opsText(other->target, rule.effect);
        if (devicesOfOps.empty() || devicesOfOps.back().first != ops)
            devicesOfOps.push_back({ops, {}});
        devicesOfOps.back().second.push_back(deviceFor(*other, target));
    }
    std::string text;
    for (const auto &[ops, devices] : devicesOfOps)
        text += (text.empty() ? "" : "; or ") + ("--device " + listed(devices, "or")) +
                " with --op " + ops;
    return text;
}

[[noreturn]] void refuseEffect(const FaultRule &rule, const FaultTargetWords &target) {
    const std::string others = otherDevices(rule, target);
    throw Refused(std::string(target.name) + " cannot have the effect " + effectText(rule) +
                  "; it can have " + listed(effectsOf(target.target), "and") + "; for " +
                  wordsOf(rule.effect).text + " give " +
                  (others.empty() ? otherDevicesAndOps(rule, target) : others));
}

[[noreturn]] void refuseOp(const FaultRule &rule, const FaultTargetWords &target) {
    const std::string op = wordOf(kFaultOps, rule.op);
    const std::string effect = wordsOf(rule.effect).text;
    const std::string ops = "give --op " + listed(opsOf(target.target, rule.effect), "or");
    const std::vector<std::string> effects = effectsOf(target.target, rule.op);
    if (!effects.empty())
        throw Refused(effect + " does not go with --op " + op + ", which can have " +
                      listed(effects, "and") + "; " + ops);
    const std::string others = otherDevices(rule, target);
    throw Refused(std::string(target.requests) + "; with " + effect + " " + ops +
                  (others.empty() ? "" : "; for " + op + " give " + others));
}

} // namespace

void checkFault(const FaultRule &rule) {
    const FaultTargetWords &target = wordsOf(targetOf(rule));
    const FaultUse *use = findUse(target.target, rule.effect);
    if (use == nullptr)
        refuseEffect(rule, target);
    if (!use->ops.has(rule.op))
        refuseOp(rule, target);
    for (const FaultOfWhole &whole : kFaultsOfWholes) {
        if (whole.target == target.target && whole.op == rule.op && rule.hasOffset != 0)
            throw Refused(std::string(whole.reason) + "; leave out --offset");
    }
}

} // namespace vb
