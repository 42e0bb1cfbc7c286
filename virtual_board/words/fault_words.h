#pragma once
// The words of fault rules, for reading them, for judging and for writing them.

#include "virtual_board/board/faults.h"

#include <cstddef>
#include <string>

namespace vb {

template <typename Value>
struct FaultWord {
    const char *text;
    Value value;
};

constexpr FaultWord<FaultOp> kFaultOps[] = {
    {"any", FaultOp::Any},         {"open", FaultOp::Open},   {"read", FaultOp::Read},
    {"write", FaultOp::Write},     {"reset", FaultOp::Reset}, {"program", FaultOp::Program},
    {"erase", FaultOp::Erase},     {"info", FaultOp::Info},   {"change", FaultOp::Change},
    {"upgrade", FaultOp::Upgrade}, {"map", FaultOp::Map}};
constexpr FaultWord<FaultWhen> kFaultWhens[] = {
    {"once", FaultWhen::Once}, {"every", FaultWhen::Every}, {"from", FaultWhen::FromOn}};
constexpr FaultWord<FaultDevice> kFaultDevices[] = {
    {"cpld", FaultDevice::Cpld}, {"gpio", FaultDevice::Gpio}, {"i2c", FaultDevice::I2c},
    {"poe", FaultDevice::Poe},   {"mtd0", FaultDevice::Mtd},  {"mtd4", FaultDevice::Mtd},
    {"mtd12", FaultDevice::Mtd}, {"mtd14", FaultDevice::Mtd}, {"console", FaultDevice::Console}};
constexpr char kFaultMtdPrefix[] = "mtd";
constexpr FaultWord<FaultEffect> kFaultEffects[] = {{"refuse", FaultEffect::Refuse},
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

/** The word of a value of a list. */
template <typename Value, size_t count>
const char *faultWord(const FaultWord<Value> (&list)[count], Value value) {
    for (const auto &word : list) {
        if (word.value == value)
            return word.text;
    }
    return "?";
}

/** "corrupt=0:0x80" */
std::string effectText(const FaultRule &rule);

} // namespace vb
