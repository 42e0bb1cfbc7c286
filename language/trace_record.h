#pragma once
// One request that reached a board, and its answer: what boards keep of it, and what is told of it
// in words and in JSON.

#include <cstdint>

namespace language {

enum class TraceKind : uint8_t {
    CpldRead,
    CpldWrite,
    I2cRead,
    I2cWrite,
    GpioInput,
    GpioOutput,
    GpioRead,
    CpldUpgrade,
    OtherRequest, // a request code that the driver does not serve
    Open,         // a file of the board; the driver's node only when its open fails
    Sleep,
    MtdRead,
    MtdWrite,
    MtdErase,
    MtdInfo,
    MtdIsBad,
    MtdMarkBad,
    MtdOther, // an ioctl that the partition's driver does not serve
    Console,  // the console's speed is set
    MdioRead,
    MdioWrite,
    Step,    // a stepped clock is moved
    Map,     // a page of the controller's registers is mapped, where no more of it can be seen
    Damaged, // no kind that there is: told of records alone that something else has overwritten
};

/** The result of a request during which the power was cut, behind `value` bytes. */
constexpr int32_t kPowerCutResult = 1;

constexpr uint32_t kTraceDataSize = 64;

/** What goes on when a clock is stepped. */
enum class StepEnds : uint32_t { Nothing, Sleep, Descriptors, Lock, Timer };

/** One request and its answer. Fields that a kind has no use for are zero. */
struct TraceRecord {
    alignas(8) uint64_t timeNs; // on the board's clock
    alignas(8) uint64_t sleepNs;
    int32_t pid;
    TraceKind kind;
    uint8_t bus, channel;
    uint8_t devAddr; // I2C device, number of a flash partition, or first field of MDIO
    uint32_t offset; // register, GPIO line, I2C or flash offset, code, second field of MDIO
    uint32_t length; // I2C, flash: bytes asked for; CPLD write: bits of inputs, which it left
    uint32_t value;  // register content, level, bytes done, block is bad, size of a file, baud,
                     // whose wait ends, or of I2C how many bytes of offset are sent
    int32_t result;  // the driver's result word
    int32_t error;   // errno with which the open or the ioctl failed, else 0
    uint32_t stored; // how much of the data the record keeps
    uint8_t data[kTraceDataSize]; // I2C: the data; opens, upgrades: the path, zero-terminated
};

} // namespace language
