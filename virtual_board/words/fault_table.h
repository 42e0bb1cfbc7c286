#pragma once
// What can go wrong on a board: with whose requests, with which of them, and how. The words of
// rules, their checks and messages, the help and the tables of the document come from here.

#include "virtual_board/board/faults.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/devices/cpld.h"
#include "virtual_board/devices/gpio.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

namespace vb {

template <typename Value>
struct FaultWord {
    const char *text;
    Value value;
};

constexpr FaultWord<FaultWhen> kFaultWhens[] = {
    {"once", FaultWhen::Once}, {"every", FaultWhen::Every}, {"from", FaultWhen::FromOn}};

constexpr FaultWord<FaultDevice> kFaultDevices[] = { // files have their paths
    {"cpld", FaultDevice::Cpld}, {"gpio", FaultDevice::Gpio}, {"i2c", FaultDevice::I2c},
    {"poe", FaultDevice::Poe},   {"mtd0", FaultDevice::Mtd},  {"mtd4", FaultDevice::Mtd},
    {"mtd12", FaultDevice::Mtd}, {"mtd14", FaultDevice::Mtd}, {"console", FaultDevice::Console}};
constexpr char kFaultMtdPrefix[] = "mtd";

constexpr FaultWord<FaultOp> kFaultOps[] = {
    {"any", FaultOp::Any},         {"open", FaultOp::Open},   {"read", FaultOp::Read},
    {"write", FaultOp::Write},     {"reset", FaultOp::Reset}, {"program", FaultOp::Program},
    {"erase", FaultOp::Erase},     {"info", FaultOp::Info},   {"change", FaultOp::Change},
    {"upgrade", FaultOp::Upgrade}, {"map", FaultOp::Map}};

/** What stands behind the name of an effect. */
enum class FaultValue : uint8_t { None, Result, Errno, Number, Corruption };

struct FaultEffectWords {
    const char *text;
    FaultEffect effect;
    FaultValue value;
    const char *form; // of the value
    const char *what; // the number is, with its article
    const char *sentence;
};

constexpr FaultEffectWords kFaultEffects[] = {
    {"refuse", FaultEffect::Refuse, FaultValue::Result, "RESULT", "",
     "the driver's result word is RESULT; nothing is done"},
    {"open-fails", FaultEffect::OpenFails, FaultValue::Errno, "ERRNO", "", "the open fails"},
    {"ioctl-fails", FaultEffect::IoctlFails, FaultValue::Errno, "ERRNO", "",
     "the ioctl fails; the driver is not asked"},
    {"short", FaultEffect::Short, FaultValue::Number, "BYTES", "a byte count",
     "only the first BYTES are transferred"},
    {"corrupt", FaultEffect::Corrupt, FaultValue::Corruption, "INDEX:MASK", "a byte's index",
     "byte INDEX of the data arrives XORed with MASK; byte 0 of a register is its upper half"},
    {"no-answer", FaultEffect::NoAnswer, FaultValue::None, "", "",
     "I2C: no acknowledge (result -ENXIO); CPLD reads 0xFFFF, GPIO reads 1, writes get lost; "
     "PoE: the frame is ignored, or the controller stays in reset"},
    {"late-answer", FaultEffect::LateAnswer, FaultValue::Number, "READ", "a read that gets it",
     "reads before number READ find no answer"},
    {"wrong-echo", FaultEffect::WrongEcho, FaultValue::None, "", "",
     "the answer belongs to another frame"},
    {"wrong-checksum", FaultEffect::WrongChecksum, FaultValue::None, "", "",
     "the answer's checksum is not its own"},
    {"bad-port", FaultEffect::BadPort, FaultValue::Number, "PORT", "a port",
     "settings of the controller's port PORT (from 0) fail, questions about it are not answered"},
    {"power-loss", FaultEffect::PowerLoss, FaultValue::None, "", "",
     "the controller's power fails for a moment; "
     "it starts anew, in its loader when its image is not whole"},
    {"no-effect", FaultEffect::NoEffect, FaultValue::None, "", "",
     "the answer tells of success, but settings stay as they were and a block is not stored"},
    {"fails", FaultEffect::Fails, FaultValue::Errno, "ERRNO", "",
     "the call fails; nothing is read, programmed, erased, mapped or set, "
     "and 'stty' says so as the system's does, with status 1"},
    {"power-cut", FaultEffect::PowerCut, FaultValue::Number, "BYTES", "a byte count",
     "only the first BYTES are programmed, erased or written; "
     "then the process is killed, and with it the program that ran it with 'system'"},
};

/** Some of the values of an enumeration. */
template <typename Value>
class FaultSet {
  public:
    template <typename... Values>
    constexpr explicit FaultSet(Values... values) : bits_((0u | ... | bit(values))) {}
    constexpr bool has(Value value) const { return (bits_ & bit(value)) != 0; }

  private:
    static constexpr uint32_t bit(Value value) { return 1u << static_cast<unsigned>(value); }
    uint32_t bits_;
};

/** Whose requests a rule is about, as those see them who write rules. */
enum class FaultTarget : uint8_t {
    Cpld,
    Gpio,
    I2c,
    Poe,
    Flash,
    Console,
    Driver,    // its node
    Memory,    // /dev/mem
    Partition, // its node
    File,      // any other
};

using FaultTargets = FaultSet<FaultTarget>;

struct FaultTargetWords {
    FaultTarget target;
    const char *name;     // in sentences
    const char *device;   // what to give for it; N is the number of one of the partitions
    const char *requests; // what is done to it
    const char *offset;   // what --offset counts, with its article; null: nothing
    uint32_t lastOffset;
    FaultTargets neighbours; // of the same thing: first choice for what is not done to it
};

constexpr FaultTargets kNoNeighbour;
constexpr FaultTargets kOpenedDriver(FaultTarget::Driver);
constexpr FaultTargetWords kFaultTargets[] = {
    {FaultTarget::Cpld, "the CPLD", "cpld", "registers are read and written, the logic is upgraded",
     "a CPLD register", kCpldRegisters - 1, kOpenedDriver},
    {FaultTarget::Gpio, "a GPIO line", "gpio", "lines are read and written", "a GPIO line",
     kGpioLines - 1, kOpenedDriver},
    {FaultTarget::I2c, "an I2C device", "i2c", "devices are read and written", "an I2C offset",
     UINT32_MAX, kOpenedDriver},
    {FaultTarget::Poe, "the PoE controller", "poe",
     "the controller is given frames (write) and released from reset", "a command code", UINT8_MAX,
     FaultTargets(FaultTarget::I2c, FaultTarget::Driver)},
    {FaultTarget::Flash, "flash", "mtdN",
     "flash is read, programmed, erased and asked for its geometry (info); "
     "change is program or erase",
     "an offset of the partition", UINT32_MAX, FaultTargets(FaultTarget::Partition)},
    {FaultTarget::Console, "the console", "console", "its speed is set (write)", nullptr, 0,
     kNoNeighbour},
    {FaultTarget::Driver, "the driver's node", kNodePath, "the node is opened", nullptr, 0,
     FaultTargets(FaultTarget::Cpld, FaultTarget::Gpio, FaultTarget::I2c)},
    {FaultTarget::Memory, kMemoryPath, kMemoryPath, "the file is opened and mapped", nullptr, 0,
     kNoNeighbour},
    {FaultTarget::Partition, "a partition's node", "/dev/mtdN", "the node is opened", nullptr, 0,
     FaultTargets(FaultTarget::Flash)},
    {FaultTarget::File, "a file", "PATH", "files are opened, read and written", nullptr, 0,
     kNoNeighbour},
};

using FaultOps = FaultSet<FaultOp>;

/** An effect that requests to a target can have. */
struct FaultUse {
    FaultTarget target;
    FaultEffect effect;
    FaultOps ops;
};

constexpr FaultOps kTransfers(FaultOp::Read, FaultOp::Write, FaultOp::Any);
constexpr FaultOps kTransfersAndUpgrade(FaultOp::Read, FaultOp::Write, FaultOp::Upgrade,
                                        FaultOp::Any);
constexpr FaultOps kFrames(FaultOp::Write);
constexpr FaultOps kChanges(FaultOp::Program, FaultOp::Erase, FaultOp::Change);
constexpr FaultOps kReads(FaultOp::Read);
constexpr FaultOps kOpens(FaultOp::Open);
constexpr FaultUse kFaultUses[] = {
    {FaultTarget::Cpld, FaultEffect::Refuse, kTransfersAndUpgrade},
    {FaultTarget::Cpld, FaultEffect::IoctlFails, kTransfersAndUpgrade},
    {FaultTarget::Cpld, FaultEffect::NoAnswer, kTransfersAndUpgrade},
    {FaultTarget::Cpld, FaultEffect::Corrupt, kTransfers},
    {FaultTarget::Gpio, FaultEffect::Refuse, kTransfers},
    {FaultTarget::Gpio, FaultEffect::IoctlFails, kTransfers},
    {FaultTarget::Gpio, FaultEffect::NoAnswer, kTransfers},
    {FaultTarget::I2c, FaultEffect::Refuse, kTransfers},
    {FaultTarget::I2c, FaultEffect::IoctlFails, kTransfers},
    {FaultTarget::I2c, FaultEffect::NoAnswer, kTransfers},
    {FaultTarget::I2c, FaultEffect::Short, kTransfers},
    {FaultTarget::I2c, FaultEffect::Corrupt, kTransfers},
    {FaultTarget::Poe, FaultEffect::NoAnswer, FaultOps(FaultOp::Write, FaultOp::Reset)},
    {FaultTarget::Poe, FaultEffect::LateAnswer, kFrames},
    {FaultTarget::Poe, FaultEffect::WrongEcho, kFrames},
    {FaultTarget::Poe, FaultEffect::WrongChecksum, kFrames},
    {FaultTarget::Poe, FaultEffect::BadPort, kFrames},
    {FaultTarget::Poe, FaultEffect::PowerLoss, kFrames},
    {FaultTarget::Poe, FaultEffect::NoEffect, kFrames},
    {FaultTarget::Flash, FaultEffect::Fails,
     FaultOps(FaultOp::Read, FaultOp::Program, FaultOp::Erase, FaultOp::Change, FaultOp::Info,
              FaultOp::Any)},
    {FaultTarget::Flash, FaultEffect::PowerCut, kChanges},
    {FaultTarget::Flash, FaultEffect::Short, kReads},
    {FaultTarget::Flash, FaultEffect::Corrupt, kReads},
    {FaultTarget::Console, FaultEffect::Fails, FaultOps(FaultOp::Write, FaultOp::Any)},
    {FaultTarget::Driver, FaultEffect::OpenFails, kOpens},
    {FaultTarget::Memory, FaultEffect::OpenFails, kOpens},
    {FaultTarget::Memory, FaultEffect::Fails, FaultOps(FaultOp::Map)},
    {FaultTarget::Partition, FaultEffect::OpenFails, kOpens},
    {FaultTarget::File, FaultEffect::OpenFails, kOpens},
    {FaultTarget::File, FaultEffect::Short, FaultOps(FaultOp::Read, FaultOp::Write)},
    {FaultTarget::File, FaultEffect::Corrupt, kReads},
    {FaultTarget::File, FaultEffect::PowerCut, FaultOps(FaultOp::Write)},
};

/** Requests that are at no offset, although others to their target are. */
struct FaultOfWhole {
    FaultTarget target;
    FaultOp op;
    const char *reason;
};

constexpr FaultOfWhole kFaultsOfWholes[] = {
    {FaultTarget::Cpld, FaultOp::Upgrade, "an upgrade is of the whole CPLD"},
    {FaultTarget::Poe, FaultOp::Reset, "out of reset there is no frame"},
    {FaultTarget::Flash, FaultOp::Info, "the geometry is of the whole partition"},
};

// What the tables say.

FaultTarget targetOf(const FaultRule &rule);
const FaultTargetWords &wordsOf(FaultTarget target);
const FaultEffectWords &wordsOf(FaultEffect effect);

template <typename Value, size_t count>
const char *wordOf(const FaultWord<Value> (&table)[count], Value value) {
    return std::find_if(std::begin(table), std::end(table),
                        [value](const auto &word) { return word.value == value; })
        ->text;
}

/** With which operations requests to a target can have an effect; null: with none. */
const FaultUse *findUse(FaultTarget target, FaultEffect effect);

/** "refuse=RESULT", "no-answer" */
std::string formOf(const FaultEffectWords &effect);

// Lists of words.
std::vector<std::string> effectsOf(FaultTarget target);
std::vector<std::string> effectsOf(FaultTarget target, FaultOp op);
std::vector<std::string> opsOf(FaultTarget target);
std::vector<std::string> opsOf(FaultTarget target, FaultEffect effect);
/** What to give for the targets whose requests can have an effect. */
std::vector<std::string> devicesOf(FaultEffect effect);

} // namespace vb
