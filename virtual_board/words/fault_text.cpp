#include "virtual_board/words/fault_text.h"

#include "virtual_board/words/fault_table.h"
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
    const FaultEffectWords &effect = wordsOf(rule.effect);
    std::string name = effect.text;
    switch (effect.value) {
    case FaultValue::None:
        break;
    case FaultValue::Errno:
        return name + "=" + errnoText(rule.argument);
    case FaultValue::Corruption:
        return name + "=" + std::to_string(rule.argument) + ":0x" + hex16Text(rule.mask).substr(4);
    case FaultValue::Result:
    case FaultValue::Number:
        return name + "=" + std::to_string(rule.argument);
    }
    return name;
}

FaultWords faultWords(const FaultRule &rule) {
    FaultWords words;
    words.device =
        rule.device == FaultDevice::File ? rule.path : wordOf(kFaultDevices, rule.device);
    if (rule.device == FaultDevice::Mtd)
        words.device = kFaultMtdPrefix + std::to_string(rule.devAddr);
    else if (rule.hasAddress != 0)
        words.device = i2cDeviceText(rule.bus, rule.channel, rule.devAddr);
    words.op = wordOf(kFaultOps, rule.op);
    words.offset = rule.hasOffset != 0 ? std::to_string(rule.offset) : "";
    words.nth = std::to_string(rule.nth);
    words.when = wordOf(kFaultWhens, rule.when);
    words.effect = effectText(rule);
    return words;
}

std::string i2cDeviceText(uint32_t bus, uint32_t channel, uint32_t devAddr) {
    return std::string(wordOf(kFaultDevices, FaultDevice::I2c)) + ":" + std::to_string(bus) + "." +
           std::to_string(channel) + ".0x" + hex16Text(devAddr).substr(4);
}

std::string faultText(const FaultRule &rule) {
    const FaultWords words = faultWords(rule);
    return "--device " + words.device + " --op " + words.op +
           (words.offset.empty() ? "" : " --offset " + words.offset) + " --nth " + words.nth +
           " --when " + words.when + " --effect " + words.effect;
}

} // namespace vb
