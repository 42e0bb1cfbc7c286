#include "virtual_board/words/fault_text.h"

#include "virtual_board/words/fault_words.h"
#include "virtual_board/words/values.h"

#include <cstring>
#include <string>

namespace vb {

namespace {

std::string errnoText(int32_t number) {
    const char *name = strerrorname_np(number);
    return name != nullptr ? name : std::to_string(number);
}

} // namespace

std::string effectText(const FaultRule &rule) {
    std::string name = faultWord(kFaultEffects, rule.effect);
    switch (rule.effect) {
    case FaultEffect::OpenFails:
    case FaultEffect::IoctlFails:
    case FaultEffect::Fails:
        return name + "=" + errnoText(rule.argument);
    case FaultEffect::Corrupt:
        return name + "=" + std::to_string(rule.argument) + ":0x" + hex16Text(rule.mask).substr(4);
    case FaultEffect::NoAnswer:
    case FaultEffect::WrongEcho:
    case FaultEffect::WrongChecksum:
    case FaultEffect::PowerLoss:
    case FaultEffect::NoEffect:
        return name;
    default:
        return name + "=" + std::to_string(rule.argument);
    }
}

FaultWords faultWords(const FaultRule &rule) {
    FaultWords words;
    words.device =
        rule.device == FaultDevice::File ? rule.path : faultWord(kFaultDevices, rule.device);
    if (rule.device == FaultDevice::Mtd)
        words.device = kFaultMtdPrefix + std::to_string(rule.devAddr);
    else if (rule.hasAddress != 0)
        words.device += ":" + std::to_string(rule.bus) + "." + std::to_string(rule.channel) +
                        ".0x" + hex16Text(rule.devAddr).substr(4);
    words.op = faultWord(kFaultOps, rule.op);
    words.offset = rule.hasOffset != 0 ? std::to_string(rule.offset) : "";
    words.nth = std::to_string(rule.nth);
    words.when = faultWord(kFaultWhens, rule.when);
    words.effect = effectText(rule);
    return words;
}

std::string faultText(const FaultRule &rule) {
    const FaultWords words = faultWords(rule);
    return "--device " + words.device + " --op " + words.op +
           (words.offset.empty() ? "" : " --offset " + words.offset) + " --nth " + words.nth +
           " --when " + words.when + " --effect " + words.effect;
}

} // namespace vb
