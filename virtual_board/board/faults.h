#pragma once
// Faults as rules: which request, when, and what goes wrong then.

#include <cstdint>

namespace vb {

enum class FaultDevice : uint8_t { Cpld, Gpio, I2c, File, Poe, Mtd, Console };
enum class FaultOp : uint8_t {
    Any,
    Open,
    Read,
    Write,   // PoE controller: a frame arrives; console: its speed is set
    Reset,   // PoE controller: its reset is released
    Upgrade, // CPLD: its logic is programmed
    // Only flash partitions:
    Program,
    Erase,
    Info,     // the geometry is asked for
    BadBlock, // a block is asked whether it is bad, or marked bad; rules reach it with Any
    Change,   // in rules: Program or Erase
    Map,      // /dev/mem is mapped
};
enum class FaultWhen : uint8_t {
    Once,   // the n-th matching request
    Every,  // each n-th matching request
    FromOn, // the n-th matching request and all after it
};
enum class FaultEffect : uint8_t {
    Refuse,     // the driver answers with result word `argument`; nothing is done
    OpenFails,  // the open fails with errno `argument`
    IoctlFails, // the ioctl fails with errno `argument`
    Short,      // only the first `argument` bytes are transferred
    Corrupt,    // byte `argument` of the data arrives XORed with `mask`
    NoAnswer,   // the device stays silent: its bus reports it, or floats; out of reset: stays in it
    // Only the PoE controller:
    LateAnswer,    // the answer is there from read number `argument` on, counted from 1
    WrongEcho,     // the answer belongs to another frame
    WrongChecksum, // the answer's checksum is not its own
    BadPort,       // what concerns port `argument` fails
    PowerLoss,     // its power fails for a moment: it starts anew
    NoEffect,      // the answer tells of success, and nothing has changed
    // Flash partitions, mappings of /dev/mem, and the console:
    Fails, // the call fails with errno `argument`; nothing is done
    // Programs and erases of flash, and writes of files:
    PowerCut, // the first `argument` bytes are changed, then the process is killed
};

/** One request as rules see it. */
struct FaultSubject {
    FaultDevice device;
    FaultOp op;
    uint32_t bus = 0, channel = 0; // I2C only
    uint32_t devAddr = 0;          // I2C device, or number of a flash partition
    uint32_t offset = 0; // register, GPIO line, I2C offset, code of a PoE command, or in the flash
    const char *path = nullptr; // files only
    uint32_t length = 0;        // flash only: of the pages or blocks from offset on
};

constexpr uint32_t kFaultPathSize = 64;

/** A rule. The fields that it does not look at are zero. */
struct FaultRule {
    uint32_t id; // 0: unused
    FaultDevice device;
    FaultOp op;
    FaultWhen when;
    FaultEffect effect;
    uint32_t hasAddress; // look at bus, channel and device address; always set for flash
    uint32_t bus, channel, devAddr;
    uint32_t hasOffset; // look at the offset
    uint32_t offset;
    char path[kFaultPathSize]; // files: the path on the board
    uint32_t nth;              // counted from 1
    int32_t argument;
    uint32_t mask;
    uint32_t matched; // matching requests so far
    uint32_t fired;   // of these, how many failed
};

constexpr uint32_t kMaxFaults = 32;

struct FaultTable {
    uint32_t lastId;
    uint32_t fileRules; // how many rules concern files: most transfers need not ask for theirs
    FaultRule rule[kMaxFaults];
};

/** What the argument of an effect can be; effects without one do not look at it. */
struct FaultArgument {
    int32_t lowest, highest;
};
FaultArgument faultArgument(FaultEffect effect);

/** Adds a rule and gives it an id; 0 when the table is full. */
uint32_t addFault(FaultTable &table, const FaultRule &rule);

/** Removes a rule; false when there is none of that id. */
bool removeFault(FaultTable &table, uint32_t id);

/** Whether the rules are such as can be followed. */
bool faultsAreConsistent(const FaultTable &table);

/** Counts the rules anew: a process may have been killed between a rule and its count. */
void mendFaults(FaultTable &table);

/** Counts a request against every rule; the first one that it trips, or null. */
const FaultRule *faultFor(FaultTable &table, const FaultSubject &subject);

} // namespace vb
