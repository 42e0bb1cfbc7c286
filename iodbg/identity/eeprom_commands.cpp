// iodbg eeprom: the raw content of the EEPROMs of the board and its supplies.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/update.h"
#include "iodbg/identity/commands.h"
#include "iodbg/identity/memory.h"

#include <algorithm>
#include <optional>

namespace iodbg {

namespace {

constexpr size_t kRowSize = 16;

std::string nameOf(const Carrier &carrier) {
    return "the EEPROM of " + carrier.name();
}

void checkSpan(const Carrier &carrier, uint32_t offset, size_t length) {
    if (length == 0 || uint64_t{offset} + length > carrier.eepromSize())
        throw Failure::usage("offset " + std::to_string(offset) + " and " + std::to_string(length) +
                             " bytes do not lie in " + nameOf(carrier) + ", which has " +
                             std::to_string(carrier.eepromSize()) +
                             " bytes; choose a smaller span");
}

Bytes readSpan(const Carrier &carrier, uint32_t offset, size_t length) {
    Bytes data(length);
    require(readEeprom(carrier, offset, data), "read " + nameOf(carrier));
    return data;
}

struct DumpArguments {
    Carrier carrier;
    uint32_t offset = 0;
    std::optional<uint32_t> length;
    std::string output;
    bool isForced = false;
};

Section describe(const DumpArguments &arguments, const Bytes &data) {
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(arguments.carrier.word()));
    section.add("offset_bytes", "Offset", numberCell(arguments.offset));
    section.add("length_bytes", "Length", numberCell(static_cast<int64_t>(data.size())));
    return section;
}

ExitCode dump(Console &console, const DumpArguments &arguments) {
    const uint32_t size = arguments.carrier.eepromSize();
    const uint32_t rest = size - std::min(size, arguments.offset);
    const uint32_t length = arguments.length.value_or(rest);
    checkSpan(arguments.carrier, arguments.offset, length);
    const Bytes data = readSpan(arguments.carrier, arguments.offset, length);

    Section section = describe(arguments, data);
    if (!arguments.output.empty()) {
        const Destination destination = {arguments.output, arguments.isForced};
        save(console, destination, data);
        section.add("output", "Saved in", textCell(destination.name()));
        return console.print({{section}, {}});
    }
    section.add("data_hex", "Data", textCell(hexBytes(data)));
    return console.print({{section}, {}}, hexDump(arguments.offset, data));
}

struct WriteArguments {
    Carrier carrier;
    uint32_t offset = 0;
    Bytes data;
    std::string file;
    bool isDryRun = false;
};

Bytes dataOf(const WriteArguments &arguments) {
    if (arguments.data.empty() == arguments.file.empty())
        throw Failure::usage("give the bytes either as HEX or with --file");
    if (arguments.file.empty())
        return arguments.data;
    Bytes content = readHostFileOrInput(arguments.file, arguments.carrier.eepromSize());
    if (content.empty())
        throw Failure(ExitCode::Host, inputName(arguments.file) + " is empty; give the right file");
    return content;
}

std::vector<Change> changedRows(uint32_t offset, ByteView before, ByteView after) {
    std::vector<Change> changes;
    for (size_t at = 0; at < before.size(); at += kRowSize) {
        const size_t length = std::min(kRowSize, before.size() - at);
        const std::string old = hexBytes(before.subspan(at, length));
        const std::string updated = hexBytes(after.subspan(at, length));
        if (old != updated)
            changes.push_back({hexNumber(offset + static_cast<uint32_t>(at), 4), old, updated});
    }
    return changes;
}

ExitCode write(Console &console, const WriteArguments &arguments) {
    const Carrier &carrier = arguments.carrier;
    const uint32_t offset = arguments.offset;
    const Bytes data = dataOf(arguments);
    checkSpan(carrier, offset, data.size());

    const Bytes before = readSpan(carrier, offset, data.size());
    const Update update = {nameOf(carrier),
                           before,
                           data,
                           [&] { return writeEeprom(carrier, offset, data); },
                           [&](Bytes &after) { return readEeprom(carrier, offset, after); },
                           "run the command again"};
    return carryOut(console, update, changedRows(offset, before, data), arguments.isDryRun);
}

void addDevice(Command &command, Carrier &target) {
    command.option("--device", kCarrierWords, "Whose EEPROM (default board)", carrier(target));
}

void addDump(Command &eeprom) {
    const auto arguments = std::make_shared<DumpArguments>();
    Command &command = eeprom.command("dump", "Print or save stored bytes");
    addDevice(command, arguments->carrier);
    command.option("--offset", "N", "First byte (default 0)", number(arguments->offset));
    command.option(
        "--length", "N", "How many bytes (default: up to the end)",
        [arguments](const std::string &word) { number(arguments->length.emplace())(word); });
    command.option("--output", "FILE", "Save the bytes in a file, - is standard output",
                   fileName(arguments->output));
    command.flag("--force", kForceHelp, arguments->isForced);
    command.example("iodbg eeprom dump --offset 0x100 --length 128")
        .example("iodbg eeprom dump --device supply1 --output saved.eeprom");
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return dump(console, *arguments); });
}

void addWrite(Command &eeprom) {
    const auto arguments = std::make_shared<WriteArguments>();
    Command &command = eeprom.command("write", "Store bytes and read them back");
    addDevice(command, arguments->carrier);
    command.argument("OFFSET", "First byte", number(arguments->offset));
    command.optionalArgument("HEX", "The bytes, two hexadecimal digits each", hex(arguments->data));
    command.option("--file", "FILE", "Take the bytes from a file, - is standard input",
                   fileName(arguments->file));
    command.flag("--dry-run", "Show what would change, change nothing", arguments->isDryRun);
    command.example("iodbg eeprom write 0x140 4E45572D3432 --dry-run")
        .example("iodbg eeprom write 0 --file board.eeprom");
    command.does([arguments](Console &console) { return write(console, *arguments); });
}

void defineEeprom(Command &eeprom) {
    addDump(eeprom);
    addWrite(eeprom);
}

} // namespace

void addEepromCommands(Command &root) {
    root.group("eeprom", "Raw content of EEPROMs", defineEeprom).onlyAfter(requireKernelModule);
}

} // namespace iodbg
