#include "virtual_board/words/fault_check.h"

#include "virtual_board/board/paths.h"
#include "virtual_board/words/fault_words.h"
#include "virtual_board/words/values.h"

#include <cstring>
#include <string>

namespace vb {

namespace {

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
        throw Refused(std::string(faultWord(kFaultOps, rule.op)) +
                      " is for flash; give --device mtd12 "
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
        throw Refused(std::string(faultWord(kFaultOps, rule.op)) +
                      " is for flash; give --device mtd12 "
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

void checkFault(const FaultRule &rule) {
    switch (rule.device) {
    case FaultDevice::File:
        return checkFileRule(rule);
    case FaultDevice::Poe:
        return checkPoeRule(rule);
    case FaultDevice::Mtd:
        return checkMtdRule(rule);
    case FaultDevice::Console:
        return checkConsoleRule(rule);
    case FaultDevice::Cpld:
    case FaultDevice::Gpio:
    case FaultDevice::I2c:
        return checkDeviceRule(rule);
    }
}

} // namespace vb
