// Words into fault rules.

#include "virtual_board/words/fault_text.h"

#include "virtual_board/board/flash_partitions.h"
#include "virtual_board/words/fault_check.h"
#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/values.h"

#include <cstring>
#include <optional>
#include <string>

namespace vb {

namespace {

constexpr FaultArgument kByteOfRegister = {0, 1};

/** The row of a word in a table; what says what the table is of. */
template <typename Row, size_t count>
const Row &rowOf(const Row (&table)[count], const std::string &text, const std::string &what) {
    std::string choices;
    for (const Row &word : table) {
        if (text == word.text)
            return word;
        choices += (choices.empty() ? "" : ", ") + std::string(word.text);
    }
    throw Refused("'" + text + "' is not " + what + "; choose from: " + choices);
}

uint32_t numberOf(const std::string &text, uint32_t min, uint32_t max, const std::string &what) {
    const auto number = parseNumber(text, max);
    if (!number.has_value() || *number < min)
        throw Refused("'" + text + "' is not " + what + ": give a number from " +
                      std::to_string(min) + " to " + std::to_string(max));
    return *number;
}

// Devices

void parseI2cAddress(FaultRule &rule, const std::string &text) {
    const size_t dot = text.find('.');
    const size_t secondDot = text.find('.', dot + 1);
    if (dot == std::string::npos || secondDot == std::string::npos)
        throw Refused("'" + text +
                      "' is not an I2C address: give BUS.CHANNEL.DEVICE, as in "
                      "i2c:0.0.0x51");
    rule.hasAddress = 1;
    rule.bus = numberOf(text.substr(0, dot), 0, 0xFF, "an I2C bus");
    rule.channel = numberOf(text.substr(dot + 1, secondDot - dot - 1), 0, 0xFF, "an I2C channel");
    rule.devAddr = numberOf(text.substr(secondDot + 1), 0, 0x7F, "an I2C device address");
}

std::string boardPaths() {
    std::string paths;
    for (const char *path : kSingleBoardPaths)
        paths += path + std::string(", ");
    for (const uint32_t number : kFlashNumbers)
        paths += kFlashNodePrefix + std::to_string(number) + ", ";
    return paths + kSharedFolderPath + "/...";
}

void parsePath(FaultRule &rule, const std::string &path) {
    char tidy[kMaxBoardPath];
    if (!tidyPath(path.c_str(), tidy) || !isBoardPath(tidy))
        throw Refused(path + " is not one of the board's own files: " + boardPaths());
    const size_t length = std::strlen(tidy);
    if (length >= kFaultPathSize)
        throw Refused("the path is longer than " + std::to_string(kFaultPathSize - 1) +
                      " characters");
    std::memcpy(rule.path, tidy, length + 1);
}

void parseFaultDevice(FaultRule &rule, const std::string &text) {
    constexpr char kI2cPrefix[] = "i2c:";
    if (text.starts_with('/')) {
        rule.device = FaultDevice::File;
        parsePath(rule, text);
    } else if (text.starts_with(kI2cPrefix)) {
        rule.device = FaultDevice::I2c;
        parseI2cAddress(rule, text.substr(std::strlen(kI2cPrefix)));
    } else {
        rule.device =
            rowOf(kFaultDevices, text, "a device (or the path of a file of the board)").value;
        if (rule.device == FaultDevice::Mtd) {
            rule.hasAddress = 1;
            rule.devAddr = numberOf(text.substr(std::strlen(kFaultMtdPrefix)), 0, UINT32_MAX, "");
        }
    }
}

void parseOffset(FaultRule &rule, const std::string &text) {
    if (text.empty())
        return;
    const FaultTargetWords &target = wordsOf(targetOf(rule));
    if (target.offset == nullptr)
        throw Refused(std::string(target.name) + " has no offset to look at; leave out --offset");
    rule.hasOffset = 1;
    rule.offset = numberOf(text, 0, target.lastOffset, target.offset);
}

// Effects

int32_t parseResult(const std::string &text) {
    const auto result = language::readNumber(text, INT32_MIN, INT32_MAX);
    if (!result.has_value() || *result == 0)
        throw Refused("'" + text +
                      "' is not a result word of a refusal: give a number other than "
                      "0, as in refuse=-5");
    return *result;
}

int32_t parseErrno(const std::string &text) {
    const int32_t highest = faultArgument(FaultEffect::Fails).highest;
    for (int number = 1; number <= highest; ++number) {
        const char *name = strerrorname_np(number);
        if (name != nullptr && text == name)
            return number;
    }
    const auto number = parseNumber(text, static_cast<uint32_t>(highest));
    if (!number.has_value() || *number == 0)
        throw Refused("'" + text + "' is not an error: give a name or a number, as in ENOENT or 2");
    return static_cast<int32_t>(*number);
}

/** The argument of an effect that is a number. */
int32_t parseArgument(const FaultArgument &argument, const std::string &text,
                      const std::string &what) {
    return static_cast<int32_t>(numberOf(text, static_cast<uint32_t>(argument.lowest),
                                         static_cast<uint32_t>(argument.highest), what));
}

void parseCorruption(FaultRule &rule, const std::string &text, const std::string &what) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos)
        throw Refused("corrupt needs a byte's index and a mask, as in corrupt=0:0x80");
    rule.argument = parseArgument(rule.device == FaultDevice::Cpld ? kByteOfRegister
                                                                   : faultArgument(rule.effect),
                                  text.substr(0, colon), what);
    rule.mask = numberOf(text.substr(colon + 1), 1, 0xFF, "a mask");
}

void parseEffect(FaultRule &rule, const std::string &text) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const std::string argument = equals == std::string::npos ? "" : text.substr(equals + 1);
    const FaultEffectWords &effect = rowOf(kFaultEffects, name, "an effect");
    rule.effect = effect.effect;
    switch (effect.value) {
    case FaultValue::Result:
        rule.argument = parseResult(argument);
        break;
    case FaultValue::Errno:
        rule.argument = parseErrno(argument);
        break;
    case FaultValue::Number:
        rule.argument = parseArgument(faultArgument(rule.effect), argument, effect.what);
        break;
    case FaultValue::Corruption:
        parseCorruption(rule, argument, effect.what);
        break;
    case FaultValue::None:
        if (equals != std::string::npos)
            throw Refused(name + " takes no value; leave out '=" + argument + "'");
        break;
    }
}

} // namespace

FaultRule parseFault(const FaultWords &words) {
    FaultRule rule{};
    parseFaultDevice(rule, words.device);
    rule.op = rowOf(kFaultOps, words.op, "an operation").value;
    parseOffset(rule, words.offset);
    rule.nth = numberOf(words.nth, 1, UINT32_MAX, "a count of requests");
    rule.when = rowOf(kFaultWhens, words.when, "a time").value;
    parseEffect(rule, words.effect);
    checkFault(rule);
    return rule;
}

} // namespace vb
