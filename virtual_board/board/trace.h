#pragma once
// The last requests that reached the board, oldest overwritten first.

#include <cstdint>

namespace vb {

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
    Damaged, // no kind that there is: told of records alone that something else has overwritten
};

/** The result of a request during which the power was cut, behind `value` bytes. */
constexpr int32_t kPowerCutResult = 1;

constexpr uint32_t kTraceDataSize = 64;

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
    uint32_t value;  // register content, level, bytes done, block is bad, size of a file, or baud
    int32_t result;  // the driver's result word
    int32_t error;   // errno with which the open or the ioctl failed, else 0
    uint32_t stored; // how much of the data the record keeps
    uint8_t data[kTraceDataSize]; // I2C: the data; opens, upgrades: the path, zero-terminated
};

constexpr uint32_t kTraceCapacity = 16384;

struct TraceRing {
    alignas(8) uint64_t total; // records ever made
    TraceRecord record[kTraceCapacity];
};

/** Who makes a request. */
struct Sender {
    int32_t pid;
    uint64_t nowNs; // on the board's clock
};

/** Starts the record of a new request, in the place of the oldest. */
constexpr TraceRecord &traceNext(TraceRing &ring, TraceKind kind, const Sender &sender) {
    TraceRecord &record = ring.record[ring.total++ % kTraceCapacity];
    record = TraceRecord{};
    record.timeNs = sender.nowNs;
    record.pid = sender.pid;
    record.kind = kind;
    return record;
}

/**
 * The record with a running number, which must be one of the last kTraceCapacity. Whatever the ring
 * holds, this copy can be followed: its kind and lengths are possible, its texts end.
 */
TraceRecord traceAt(const TraceRing &ring, uint64_t number);

/** Number of the oldest record that is still there. */
constexpr uint64_t traceOldest(const TraceRing &ring) {
    return ring.total > kTraceCapacity ? ring.total - kTraceCapacity : 0;
}

} // namespace vb
