// iodbg i2c: transfers on the board's I2C buses.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/registers/commands.h"
#include "support/board_map.h"

#include <cerrno>

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

// i2c scan

/** A branch of a bus, as a scan walks it. */
struct Branch {
    uint32_t bus;
    uint32_t channel;
};

/** What is known of a place on a bus. */
struct KnownDevice {
    bsp::I2cPlace first;
    uint32_t channels;  // from the first one's on
    uint32_t addresses; // from the first one's on
    const char *name;
    bool mayBeAsked = true;
};

constexpr uint32_t kAllChannels = kMaxChannel + 1;
constexpr KnownDevice kKnownDevices[] = {
    {bsp::kBoardEeprom, 1, BSP_EEPROM_SIZE / BSP_EEPROM_BLOCK_SIZE, "EEPROM of the board"},
    {bsp::kTemperatureSensor, 1, 1, "temperature sensor"},
    {bsp::kClockChip, 1, 1, "clock chip"},
    {bsp::kSupplyEeprom, BSP_FIXED_SUPPLIES, 1, "EEPROM of a supply"},
    {bsp::kSupplyPmbus, BSP_FIXED_SUPPLIES, 1, "supply, PMBus"},
    {bsp::kUplinkModule, kAllChannels, 1, "SFP module, identification"},
    {{bsp::kUplinkModule.bus, 0, BSP_SFP_DIAGNOSTICS}, kAllChannels, 1, "SFP module, diagnostics"},
    {{bsp::kUplinkModule.bus, 0, BSP_SFP_PHY}, kAllChannels, 1, "SFP module, PHY"},
    // Its answers stand in a row: who takes a byte of one takes it from the program that asked.
    {bsp::kPoeController, 1, 1, "PoE controller", false},
};

const KnownDevice *knownDevice(const Branch &branch, uint32_t device) {
    for (const KnownDevice &known : kKnownDevices) {
        if (branch.bus == known.first.bus &&
            branch.channel - known.first.channel < known.channels &&
            device - known.first.device < known.addresses)
            return &known;
    }
    return nullptr;
}

/** The system's own bus with all of its branches, or what was asked for. */
std::vector<Branch> branchesOf(const std::vector<uint32_t> &words) {
    if (words.size() == 1)
        throw Failure::usage("CHANNEL is required with BUS: a bus is scanned branch by branch");
    if (!words.empty())
        return {{words[0], words[1]}};
    constexpr uint32_t kSystemBranches = bsp::kSupplyPmbus.channel + BSP_FIXED_SUPPLIES;
    std::vector<Branch> branches;
    for (uint32_t channel = 0; channel < kSystemBranches; ++channel)
        branches.push_back({bsp::kSupplyPmbus.bus, channel});
    return branches;
}

void scanBranch(Table &table, const Branch &branch) {
    constexpr uint32_t kFirst = 0x08; // what is below and above is not for devices
    constexpr uint32_t kLast = 0x77;
    for (uint32_t device = kFirst; device <= kLast; ++device) {
        const KnownDevice *known = knownDevice(branch, device);
        const bool isAsked = known == nullptr || known->mayBeAsked;
        uint8_t byte = 0;
        const int32_t status = isAsked
                                   ? bspI2cRead(branch.bus, branch.channel, device, 0, 0, &byte, 1)
                                   : int32_t{BSP_OK};
        if (status == BSP_E_FAILED || status == -ETIMEDOUT)
            throw Failure::board("read bus " + std::to_string(branch.bus) + " channel " +
                                     std::to_string(branch.channel) + " device " +
                                     hexNumber(device, 2),
                                 status);
        if (status == BSP_OK)
            table.rows.push_back({numberCell(branch.bus), numberCell(branch.channel),
                                  hexCell(device, 2),
                                  isAsked ? flagCell(true, "yes", "") : Cell{"not asked", nullptr},
                                  known == nullptr ? Cell{"", nullptr} : textCell(known->name)});
    }
}

ExitCode scan(Console &console, const std::vector<uint32_t> &words) {
    Table table = {"devices",
                   {{"bus", "BUS"},
                    {"channel", "CHANNEL"},
                    {"device", "DEVICE"},
                    {"answers", "ANSWERS"},
                    {"name", "USUALLY"}},
                   {}};
    for (const Branch &branch : branchesOf(words))
        scanBranch(table, branch);
    const Report report = {{table}, {}};
    return console.print(report, table.rows.empty() ? "no device answers\n" : report.toText());
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

void addScan(Command &i2c) {
    const auto words = std::make_shared<std::vector<uint32_t>>();
    Command &command = i2c.command("scan", "Look which devices answer on a branch of a bus");
    command.optionalArgument(
        "BUS", "Number of the bus, 0-255; without it bus 0, channels 0-3",
        [words](const std::string &word) { number(words->emplace_back(), kMaxBus)(word); });
    command.optionalArgument(
        "CHANNEL", "Branch behind the bus, 0-255",
        [words](const std::string &word) { number(words->emplace_back(), kMaxChannel)(word); });
    command.detail("Reads a byte at each address from 0x08 to 0x77, without an offset. A chip that "
                   "counts on from its last offset counts that byte.\n"
                   "The PoE controller is not asked: the byte would be missing from the answer to "
                   "another program.");
    command.example("iodbg i2c scan").example("iodbg i2c scan 1 0");
    takesCapturedUnit(command);
    command.does([words](Console &console) { return scan(console, *words); });
}

void defineI2c(Command &i2c) {
    addScan(i2c);
    const auto transfer = std::make_shared<Transfer>();
    Command &readCommand = i2c.command("read", "Read from a device");
    addTarget(readCommand, transfer->target);
    readCommand.argument("LENGTH", "Bytes to read, 1-65535",
                         numberFromOne(transfer->length, kMaxTransfer));
    readCommand.example("iodbg i2c read 0 0 0x51 0x100 16 --offset-length 2");
    takesCapturedUnit(readCommand);
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
