#include "virtual_board/words/fault_table.h"

#include <algorithm>
#include <iterator>

namespace vb {

namespace {

FaultTarget targetOfPath(const std::string &path) {
    if (path == kNodePath)
        return FaultTarget::Driver;
    if (path == kMemoryPath)
        return FaultTarget::Memory;
    return path.starts_with(kFlashNodePrefix) ? FaultTarget::Partition : FaultTarget::File;
}

/** The words of the effects for which something holds, in their order in the table of uses. */
template <typename Holds>
std::vector<std::string> effectsWhere(Holds holds) {
    std::vector<std::string> words;
    for (const FaultUse &use : kFaultUses) {
        if (holds(use))
            words.emplace_back(wordsOf(use.effect).text);
    }
    return words;
}

/** The operations that one of the uses has for which something holds; 'any' comes last. */
template <typename Holds>
std::vector<std::string> opsWhere(Holds holds) {
    std::vector<std::string> words;
    const auto isThere = [&](FaultOp op) {
        return std::any_of(std::begin(kFaultUses), std::end(kFaultUses),
                           [&](const FaultUse &use) { return holds(use) && use.ops.has(op); });
    };
    for (const auto &word : kFaultOps) {
        if (word.value != FaultOp::Any && isThere(word.value))
            words.emplace_back(word.text);
    }
    if (isThere(FaultOp::Any))
        words.emplace_back(wordOf(kFaultOps, FaultOp::Any));
    return words;
}

template <typename Holds>
std::vector<std::string> devicesWhere(Holds holds) {
    std::vector<std::string> words;
    for (const FaultTargetWords &target : kFaultTargets) {
        const bool isThere =
            std::any_of(std::begin(kFaultUses), std::end(kFaultUses), [&](const FaultUse &use) {
                return use.target == target.target && holds(use);
            });
        if (isThere)
            words.emplace_back(target.device);
    }
    return words;
}

} // namespace

FaultTarget targetOf(const FaultRule &rule) {
    switch (rule.device) {
    case FaultDevice::Cpld:
        return FaultTarget::Cpld;
    case FaultDevice::Gpio:
        return FaultTarget::Gpio;
    case FaultDevice::I2c:
        return FaultTarget::I2c;
    case FaultDevice::Poe:
        return FaultTarget::Poe;
    case FaultDevice::Mtd:
        return FaultTarget::Flash;
    case FaultDevice::Console:
        return FaultTarget::Console;
    case FaultDevice::File:
        break;
    }
    return targetOfPath(rule.path);
}

const FaultTargetWords &wordsOf(FaultTarget target) {
    return *std::find_if(std::begin(kFaultTargets), std::end(kFaultTargets),
                         [target](const auto &words) { return words.target == target; });
}

const FaultEffectWords &wordsOf(FaultEffect effect) {
    return *std::find_if(std::begin(kFaultEffects), std::end(kFaultEffects),
                         [effect](const auto &words) { return words.effect == effect; });
}

const FaultUse *findUse(FaultTarget target, FaultEffect effect) {
    const auto *use =
        std::find_if(std::begin(kFaultUses), std::end(kFaultUses), [=](const FaultUse &row) {
            return row.target == target && row.effect == effect;
        });
    return use != std::end(kFaultUses) ? use : nullptr;
}

std::string formOf(const FaultEffectWords &effect) {
    return std::string(effect.text) + (*effect.form == '\0' ? "" : "=") + effect.form;
}

std::vector<std::string> effectsOf(FaultTarget target) {
    return effectsWhere([=](const FaultUse &use) { return use.target == target; });
}

std::vector<std::string> effectsOf(FaultTarget target, FaultOp op) {
    return effectsWhere(
        [=](const FaultUse &use) { return use.target == target && use.ops.has(op); });
}

std::vector<std::string> opsOf(FaultTarget target) {
    return opsWhere([=](const FaultUse &use) { return use.target == target; });
}

std::vector<std::string> opsOf(FaultTarget target, FaultEffect effect) {
    return opsWhere(
        [=](const FaultUse &use) { return use.target == target && use.effect == effect; });
}

std::vector<std::string> devicesOf(FaultEffect effect) {
    return devicesWhere([=](const FaultUse &use) { return use.effect == effect; });
}

} // namespace vb
