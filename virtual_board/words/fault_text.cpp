#include "virtual_board/words/fault_text.h"

#include "virtual_board/board/paths.h"
#include "virtual_board/devices/cpld.h"
#include "virtual_board/devices/gpio.h"
#include "virtual_board/words/values.h"

#include <cstdlib>
#include <cstring>

namespace vb {

namespace {

constexpr FaultArgument kByteOfRegister = {0, 1};

template <typename Value>
struct Word {
    const char *text;
    Value value;
};

constexpr Word<FaultOp> kOps[] = {
    {"any", FaultOp::Any},         {"open", FaultOp::Open},   {"read", FaultOp::Read},
    {"write", FaultOp::Write},     {"reset", FaultOp::Reset}, {"program", FaultOp::Program},
    {"erase", FaultOp::Erase},     {"info", FaultOp::Info},   {"change", FaultOp::Change},
    {"upgrade", FaultOp::Upgrade}, {"map", FaultOp::Map}};
constexpr Word<FaultWhen> kWhens[] = {
    {"once", FaultWhen::Once}, {"every", FaultWhen::Every}, {"from", FaultWhen::FromOn}};
constexpr Word<FaultDevice> kDevices[] = {
    {"cpld", FaultDevice::Cpld}, {"gpio", FaultDevice::Gpio}, {"i2c", FaultDevice::I2c},
    {"poe", FaultDevice::Poe},   {"mtd0", FaultDevice::Mtd},  {"mtd4", FaultDevice::Mtd},
    {"mtd12", FaultDevice::Mtd}, {"mtd14", FaultDevice::Mtd}, {"console", FaultDevice::Console}};
constexpr char kMtdPrefix[] = "mtd";
constexpr Word<FaultEffect> kEffects[] = {{"refuse", FaultEffect::Refuse},
                                          {"open-fails", FaultEffect::OpenFails},
                                          {"ioctl-fails", FaultEffect::IoctlFails},
                                          {"short", FaultEffect::Short},
                                          {"corrupt", FaultEffect::Corrupt},
                                          {"no-answer", FaultEffect::NoAnswer},
                                          {"late-answer", FaultEffect::LateAnswer},
                                          {"wrong-echo", FaultEffect::WrongEcho},
                                          {"wrong-checksum", FaultEffect::WrongChecksum},
                                          {"bad-port", FaultEffect::BadPort},
                                          {"power-loss", FaultEffect::PowerLoss},
                                          {"no-effect", FaultEffect::NoEffect},
                                          {"fails", FaultEffect::Fails},
                                          {"power-cut", FaultEffect::PowerCut}};

/** The value of a word of a list; what says what the list is of. */
template <typename Value, size_t count>
Value valueOf(const Word<Value> (&list)[count], const std::string &text, const std::string &what) {
    std::string choices;
    for (const auto &word : list) {
        if (text == word.text)
            return word.value;
        choices += (choices.empty() ? "" : ", ") + std::string(word.text);
    }
    throw Refused("'" + text + "' is not " + what + "; choose from: " + choices);
}

template <typename Value, size_t count>
const char *wordOf(const Word<Value> (&list)[count], Value value) {
    for (const auto &word : list) {
        if (word.value == value)
            return word.text;
    }
    return "?";
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

void parsePath(FaultRule &rule, const std::string &path) {
    char tidy[kMaxBoardPath];
    if (!tidyPath(path.c_str(), tidy) || !isBoardPath(tidy))
        throw Refused(path + " is not one of the board's own files: /dev/bspHandle, /proc/cmdline, "
                             "/dev/mem, /dev/mtd0, /dev/mtd4, /dev/mtd12, /dev/mtd14, /tmp/bsp..., "
                             "/tmp/bspFlashLockFile, /tmp/bspPoeLockFile");
    const size_t length = std::strlen(tidy);
    if (length >= kFaultPathSize)
        throw Refused("the path is longer than " + std::to_string(kFaultPathSize - 1) +
                      " characters");
    std::memcpy(rule.path, tidy, length + 1);
}

void parseDevice(FaultRule &rule, const std::string &text) {
    constexpr char kI2cPrefix[] = "i2c:";
    if (text.starts_with('/')) {
        rule.device = FaultDevice::File;
        parsePath(rule, text);
    } else if (text.starts_with(kI2cPrefix)) {
        rule.device = FaultDevice::I2c;
        parseI2cAddress(rule, text.substr(std::strlen(kI2cPrefix)));
    } else {
        rule.device = valueOf(kDevices, text, "a device (or the path of a file of the board)");
        if (rule.device == FaultDevice::Mtd) {
            rule.hasAddress = 1;
            rule.devAddr = numberOf(text.substr(std::strlen(kMtdPrefix)), 0, UINT32_MAX, "");
        }
    }
}

void parseOffset(FaultRule &rule, const std::string &text) {
    if (text.empty())
        return;
    if (rule.device == FaultDevice::File)
        throw Refused("files have no offset to look at; leave out --offset");
    if (rule.device == FaultDevice::Console)
        throw Refused("the console has no offset to look at; leave out --offset");
    rule.hasOffset = 1;
    if (rule.device == FaultDevice::Cpld)
        rule.offset = numberOf(text, 0, kCpldRegisters - 1, "a CPLD register");
    else if (rule.device == FaultDevice::Gpio)
        rule.offset = numberOf(text, 0, kGpioLines - 1, "a GPIO line");
    else if (rule.device == FaultDevice::Poe)
        rule.offset = numberOf(text, 0, UINT8_MAX, "a command code");
    else if (rule.device == FaultDevice::Mtd)
        rule.offset = numberOf(text, 0, UINT32_MAX, "an offset of the partition");
    else
        rule.offset = numberOf(text, 0, UINT32_MAX, "an I2C offset");
}

// Effects

int32_t parseResult(const std::string &text) {
    char *end = nullptr;
    errno = 0;
    const long long result = std::strtoll(text.c_str(), &end, 0);
    const bool isWhole = end != text.c_str() && *end == '\0' && errno == 0;
    if (!isWhole || result == 0 || result < INT32_MIN || result > INT32_MAX)
        throw Refused("'" + text +
                      "' is not a result word of a refusal: give a number other than "
                      "0, as in refuse=-5");
    return static_cast<int32_t>(result);
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

std::string errnoText(int32_t number) {
    const char *name = strerrorname_np(number);
    return name != nullptr ? name : std::to_string(number);
}

/** The argument of an effect that is a number. */
int32_t parseArgument(const FaultArgument &argument, const std::string &text,
                      const std::string &what) {
    return static_cast<int32_t>(numberOf(text, static_cast<uint32_t>(argument.lowest),
                                         static_cast<uint32_t>(argument.highest), what));
}

void parseCorruption(FaultRule &rule, const std::string &text) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos)
        throw Refused("corrupt needs a byte's index and a mask, as in corrupt=0:0x80");
    rule.argument = parseArgument(rule.device == FaultDevice::Cpld ? kByteOfRegister
                                                                   : faultArgument(rule.effect),
                                  text.substr(0, colon), "a byte's index");
    rule.mask = numberOf(text.substr(colon + 1), 1, 0xFF, "a mask");
}

void parseEffect(FaultRule &rule, const std::string &text) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const std::string argument = equals == std::string::npos ? "" : text.substr(equals + 1);
    rule.effect = valueOf(kEffects, name, "an effect");
    switch (rule.effect) {
    case FaultEffect::Refuse:
        rule.argument = parseResult(argument);
        break;
    case FaultEffect::OpenFails:
    case FaultEffect::IoctlFails:
    case FaultEffect::Fails:
        rule.argument = parseErrno(argument);
        break;
    case FaultEffect::PowerCut:
    case FaultEffect::Short:
        rule.argument = parseArgument(faultArgument(rule.effect), argument, "a byte count");
        break;
    case FaultEffect::Corrupt:
        parseCorruption(rule, argument);
        break;
    case FaultEffect::LateAnswer:
        rule.argument = parseArgument(faultArgument(rule.effect), argument, "a read that gets it");
        break;
    case FaultEffect::BadPort:
        rule.argument = parseArgument(faultArgument(rule.effect), argument, "a port");
        break;
    case FaultEffect::NoAnswer:
    case FaultEffect::WrongEcho:
    case FaultEffect::WrongChecksum:
    case FaultEffect::PowerLoss:
    case FaultEffect::NoEffect:
        if (equals != std::string::npos)
            throw Refused(name + " takes no value; leave out '=" + argument + "'");
        break;
    }
}

std::string effectText(const FaultRule &rule) {
    std::string name = wordOf(kEffects, rule.effect);
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

// Which effects a use of a device can have

/** Refuses a mapping of anything but /dev/mem. */
void checkNoMapping(const FaultRule &rule) {
    if (rule.op == FaultOp::Map)
        throw Refused(std::string("map is for ") + kMemoryPath + ", with fails=ERRNO");
}

/** Refuses an upgrade of anything but the CPLD. */
void checkNoUpgrade(const FaultRule &rule) {
    checkNoMapping(rule);
    if (rule.op == FaultOp::Upgrade)
        throw Refused("upgrade is for the CPLD; give --device cpld");
}

bool isFlashOp(FaultOp op) {
    return op == FaultOp::Program || op == FaultOp::Erase || op == FaultOp::Info ||
           op == FaultOp::Change;
}

void checkFileRule(const FaultRule &rule) {
    const bool isMemory = std::strcmp(rule.path, kMemoryPath) == 0;
    if (isMemory && rule.op == FaultOp::Map && rule.effect == FaultEffect::Fails)
        return;
    if (isMemory && rule.effect != FaultEffect::OpenFails)
        throw Refused(std::string(kMemoryPath) +
                      " is opened and mapped: give open-fails=ERRNO with "
                      "--op open, or fails=ERRNO with --op map");
    checkNoUpgrade(rule);
    if (isFlashOp(rule.op))
        throw Refused(std::string(wordOf(kOps, rule.op)) + " is for flash; give --device mtd12 "
                                                           "and the like");
    const bool isPartition = std::string(rule.path).starts_with(kFlashNodePrefix);
    if (isPartition && rule.effect != FaultEffect::OpenFails)
        throw Refused("for anything but the open of a partition give --device mtd12 and the like");
    const bool isNode = std::strcmp(rule.path, kNodePath) == 0;
    const bool isTransfer = rule.op == FaultOp::Read || rule.op == FaultOp::Write;
    switch (rule.effect) {
    case FaultEffect::OpenFails:
        if (rule.op != FaultOp::Open)
            throw Refused("open-fails is for opens; give --op open");
        return;
    case FaultEffect::Short:
        if (isNode || !isTransfer)
            throw Refused("short is for reads and writes of a file; give --op read or --op write, "
                          "and a file other than the driver's node");
        return;
    case FaultEffect::Corrupt:
        if (isNode || rule.op != FaultOp::Read)
            throw Refused("corrupt is for reads of a file; give --op read, and a file other than "
                          "the driver's node");
        return;
    case FaultEffect::PowerCut:
        if (isNode || rule.op != FaultOp::Write)
            throw Refused("power-cut is for writes of a file, and programs and erases of flash; "
                          "give --op write, or --device mtd12 and the like");
        return;
    default:
        throw Refused("a file cannot have the effect " + effectText(rule) +
                      "; it can have open-fails, short, corrupt and power-cut");
    }
}

bool isPoeEffect(FaultEffect effect) {
    return effect == FaultEffect::LateAnswer || effect == FaultEffect::WrongEcho ||
           effect == FaultEffect::WrongChecksum || effect == FaultEffect::BadPort ||
           effect == FaultEffect::PowerLoss || effect == FaultEffect::NoEffect;
}

void checkPoeRule(const FaultRule &rule) {
    if (rule.op != FaultOp::Write && rule.op != FaultOp::Reset)
        throw Refused("the PoE controller is given frames and released from reset; give --op write "
                      "or --op reset");
    if (!isPoeEffect(rule.effect) && rule.effect != FaultEffect::NoAnswer)
        throw Refused(
            "the PoE controller cannot have the effect " + effectText(rule) +
            "; it can have no-answer, late-answer, wrong-echo, wrong-checksum, "
            "bad-port, power-loss and no-effect; for its bus give --device i2c:16.0.0x20");
    if (rule.op == FaultOp::Reset && (rule.hasOffset != 0 || isPoeEffect(rule.effect)))
        throw Refused("out of reset there is no frame: give --effect no-answer without --offset");
}

void checkMtdRule(const FaultRule &rule) {
    checkNoUpgrade(rule);
    if (rule.op == FaultOp::Open || rule.op == FaultOp::Write || rule.op == FaultOp::Reset)
        throw Refused(
            "flash is read, programmed, erased and asked for its geometry; give --op read, "
            "program, erase, change (program or erase), info or any; for opens give "
            "--device /dev/mtd12 and the like");
    if (rule.op == FaultOp::Info && rule.hasOffset != 0)
        throw Refused("the geometry is of the whole partition; leave out --offset");
    const bool isChange =
        rule.op == FaultOp::Program || rule.op == FaultOp::Erase || rule.op == FaultOp::Change;
    switch (rule.effect) {
    case FaultEffect::Fails:
        return;
    case FaultEffect::PowerCut:
        if (!isChange)
            throw Refused(
                "power-cut is for programs and erases; give --op program, erase or change");
        return;
    case FaultEffect::Short:
    case FaultEffect::Corrupt:
        if (rule.op != FaultOp::Read)
            throw Refused("short and corrupt are for reads of flash; give --op read");
        return;
    default:
        throw Refused("flash cannot have the effect " + effectText(rule) +
                      "; it can have fails, power-cut, short and corrupt");
    }
}

void checkConsoleRule(const FaultRule &rule) {
    if (rule.op != FaultOp::Write && rule.op != FaultOp::Any)
        throw Refused("the console's speed is set; give --op write or any");
    if (rule.effect != FaultEffect::Fails)
        throw Refused("the console cannot have the effect " + effectText(rule) +
                      "; it can have fails");
}

void checkUpgradeRule(const FaultRule &rule) {
    if (rule.hasOffset != 0)
        throw Refused("an upgrade is of the whole CPLD; leave out --offset");
    if (rule.effect == FaultEffect::Corrupt)
        throw Refused("an upgrade can be refused, fail or get no answer; give refuse, ioctl-fails "
                      "or no-answer");
}

void checkDeviceRule(const FaultRule &rule) {
    if (isFlashOp(rule.op))
        throw Refused(std::string(wordOf(kOps, rule.op)) + " is for flash; give --device mtd12 "
                                                           "and the like");
    if (rule.effect == FaultEffect::Fails || rule.effect == FaultEffect::PowerCut)
        throw Refused(effectText(rule) + " is for flash" +
                      (rule.effect == FaultEffect::Fails ? " and the console" : "") +
                      "; give --device mtd12 and the like");
    if (rule.op == FaultOp::Reset)
        throw Refused("reset is for the PoE controller; give --device poe");
    checkNoMapping(rule);
    if (rule.device != FaultDevice::Cpld)
        checkNoUpgrade(rule);
    else if (rule.op == FaultOp::Upgrade)
        checkUpgradeRule(rule);
    if (isPoeEffect(rule.effect))
        throw Refused(effectText(rule) + " is for the PoE controller; give --device poe");
    if (rule.op == FaultOp::Open)
        throw Refused(std::string("only files are opened; for the driver's node give --device ") +
                      kNodePath);
    if (rule.effect == FaultEffect::OpenFails)
        throw Refused(std::string("open-fails is for files; for the driver's node give --device ") +
                      kNodePath + " --op open");
    if (rule.effect == FaultEffect::Short && rule.device != FaultDevice::I2c)
        throw Refused("short is for i2c and files: other requests have no length");
    if (rule.effect == FaultEffect::Corrupt && rule.device == FaultDevice::Gpio)
        throw Refused("corrupt is for cpld, i2c and files: a line's level has no bytes");
}

} // namespace

FaultRule parseFault(const FaultWords &words) {
    FaultRule rule{};
    parseDevice(rule, words.device);
    rule.op = valueOf(kOps, words.op, "an operation");
    parseOffset(rule, words.offset);
    rule.nth = numberOf(words.nth, 1, UINT32_MAX, "a count of requests");
    rule.when = valueOf(kWhens, words.when, "a time");
    parseEffect(rule, words.effect);
    if (rule.device == FaultDevice::File)
        checkFileRule(rule);
    else if (rule.device == FaultDevice::Poe)
        checkPoeRule(rule);
    else if (rule.device == FaultDevice::Mtd)
        checkMtdRule(rule);
    else if (rule.device == FaultDevice::Console)
        checkConsoleRule(rule);
    else
        checkDeviceRule(rule);
    return rule;
}

FaultWords faultWords(const FaultRule &rule) {
    FaultWords words;
    words.device = rule.device == FaultDevice::File ? rule.path : wordOf(kDevices, rule.device);
    if (rule.device == FaultDevice::Mtd)
        words.device = kMtdPrefix + std::to_string(rule.devAddr);
    else if (rule.hasAddress != 0)
        words.device += ":" + std::to_string(rule.bus) + "." + std::to_string(rule.channel) +
                        ".0x" + hex16Text(rule.devAddr).substr(4);
    words.op = wordOf(kOps, rule.op);
    words.offset = rule.hasOffset != 0 ? std::to_string(rule.offset) : "";
    words.nth = std::to_string(rule.nth);
    words.when = wordOf(kWhens, rule.when);
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
