// iodbg i2c: transfers on the board's I2C buses.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/registers/commands.h"

namespace iodbg {

namespace {

// The library cuts what is wider, so wider words stop here.
constexpr uint32_t kMaxBus = 0xFF;
constexpr uint32_t kMaxChannel = 0xFF;
constexpr uint32_t kMaxDevAddr = 0x7F;
constexpr uint32_t kMaxOffsetLength = 4;
constexpr uint32_t kMaxTransfer = 0xFFFF; // the length field of an I2C message

struct Target {
    uint32_t bus = 0, channel = 0, devAddr = 0;
    uint32_t offset = 0;
    uint32_t offsetLength = 1;
};

struct Transfer {
    Target target;
    uint32_t length = 0; // of a read
    Bytes data;          // of a write
};

std::string nameOf(const Target &target) {
    return "bus " + std::to_string(target.bus) + " channel " + std::to_string(target.channel) +
           " device " + hexNumber(target.devAddr, 2) + " offset " + hexNumber(target.offset, 2);
}

void checkOffset(const Target &target) {
    const uint64_t limit = uint64_t{1} << (8 * target.offsetLength);
    if (target.offset >= limit)
        throw Failure::usage("offset " + hexNumber(target.offset, 2) + " does not fit in " +
                             std::to_string(target.offsetLength) +
                             " bytes; give a longer --offset-length or a smaller offset");
}

Report describe(const Target &target, const Bytes &data) {
    Section section = {"", "", {}};
    section.add("bus", "Bus", numberCell(target.bus));
    section.add("channel", "Channel", numberCell(target.channel));
    section.add("device", "Device", hexCell(target.devAddr, 2));
    section.add("offset", "Offset", hexCell(target.offset, 2));
    section.add("length_bytes", "Length", numberCell(static_cast<int64_t>(data.size())));
    section.add("data_hex", "Data", textCell(hexBytes(data)));
    return {{section}, {}};
}

ExitCode read(Console &console, const Transfer &transfer) {
    const Target &target = transfer.target;
    checkOffset(target);
    Bytes data(transfer.length);
    require(bspI2cRead(target.bus, target.channel, target.devAddr, target.offset,
                       target.offsetLength, data.data(), static_cast<int32_t>(data.size())),
            "read " + nameOf(target));
    return console.print(describe(target, data), hexDump(target.offset, data));
}

ExitCode write(Console &console, const Transfer &transfer) {
    const Target &target = transfer.target;
    checkOffset(target);
    const Bytes &data = transfer.data;
    if (data.size() > kMaxTransfer)
        throw Failure::usage("more than 65535 bytes; write them in parts");
    require(bspI2cWrite(target.bus, target.channel, target.devAddr, target.offset,
                        target.offsetLength, data.data(), static_cast<int32_t>(data.size())),
            "write " + nameOf(target));
    return console.print(describe(target, data));
}

void addTarget(Command &command, Target &target) {
    command.argument("BUS", "Number of the bus, 0-255", number(target.bus, kMaxBus));
    command.argument("CHANNEL", "Branch behind the bus, 0-255",
                     number(target.channel, kMaxChannel));
    command.argument("DEVICE", "7-bit address of the device, 0-0x7F",
                     number(target.devAddr, kMaxDevAddr));
    command.argument("OFFSET", "Register or memory offset inside the device",
                     number(target.offset));
    command.option("--offset-length", "N",
                   "Offset bytes that are sent before the data, 0-4 (default 1)",
                   number(target.offsetLength, kMaxOffsetLength));
}

void defineI2c(Command &i2c) {
    const auto transfer = std::make_shared<Transfer>();
    Command &readCommand = i2c.command("read", "Read from a device");
    addTarget(readCommand, transfer->target);
    readCommand.argument("LENGTH", "Bytes to read, 1-65535",
                         numberFromOne(transfer->length, kMaxTransfer));
    readCommand.example("iodbg i2c read 0 0 0x51 0x100 16 --offset-length 2");
    readCommand.does([transfer](Console &console) { return read(console, *transfer); });

    Command &writeCommand = i2c.command("write", "Write to a device, in one transfer");
    addTarget(writeCommand, transfer->target);
    writeCommand.argument("HEX", "The bytes, two hexadecimal digits each", hex(transfer->data));
    writeCommand.detail("Nothing is read back.");
    writeCommand.example("iodbg i2c write 0 0 0x51 0x3F0 4E4557 --offset-length 2");
    writeCommand.does([transfer](Console &console) { return write(console, *transfer); });
}

} // namespace

void addI2cCommands(Command &root) {
    root.group("i2c", "Transfers on the I2C buses", defineI2c).onlyAfter(requireKernelModule);
}

} // namespace iodbg
