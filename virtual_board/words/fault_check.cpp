#include "virtual_board/words/fault_check.h"

#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

namespace vb {

namespace {

std::string elsewhere(const std::string &word, const std::vector<std::string> &devices) {
    return "; for " + word + " give --device " + listed(devices, "or");
}

/** Where an operation has its place that is of one other target alone. */
std::string elsewhere(FaultOp op, const FaultTargetWords &target) {
    const std::vector<std::string> devices = devicesOf(op);
    return devices.size() == 1 && devices[0] != target.device
               ? elsewhere(wordOf(kFaultOps, op), devices)
               : "";
}

std::string neighbourOf(const FaultTargetWords &target) {
    return target.neighbour == nullptr ? "" : std::string("; ") + target.neighbour;
}

[[noreturn]] void refuseEffect(const FaultRule &rule, const FaultTargetWords &target) {
    throw Refused(std::string(target.name) + " cannot have the effect " + effectText(rule) +
                  "; it can have " + listed(effectsOf(target.target), "and") +
                  elsewhere(wordsOf(rule.effect).text, devicesOf(rule.effect)) +
                  elsewhere(rule.op, target) + neighbourOf(target));
}

[[noreturn]] void refuseOp(const FaultRule &rule, const FaultTargetWords &target) {
    const std::string op = wordOf(kFaultOps, rule.op);
    const std::string effect = wordsOf(rule.effect).text;
    const std::string others = "give --op " + listed(opsOf(target.target, rule.effect), "or");
    const std::vector<std::string> effects = effectsOf(target.target, rule.op);
    if (!effects.empty())
        throw Refused(effect + " does not go with --op " + op + ", which can have " +
                      listed(effects, "and") + "; " + others);
    throw Refused(std::string(target.requests) + "; with " + effect + " " + others +
                  elsewhere(rule.op, target) + neighbourOf(target));
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
