// iodbg identity get: serial number, MAC addresses and product records.

#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/identity/commands.h"
#include "iodbg/identity/items.h"
#include "iodbg/identity/new.h"
#include "iodbg/identity/record.h"
#include "iodbg/identity/record_file.h"
#include "iodbg/identity/set.h"

namespace iodbg {

namespace {

struct GetArguments {
    std::string item; // empty: all
    Carrier carrier;
    std::string output;
    std::string format;
    bool isForced = false;

    bool asksFor(const char *name) const { return item.empty() || item == name; }
};

void checkArguments(const GetArguments &arguments) {
    if (arguments.item != "record" && !arguments.output.empty())
        throw Failure::usage("--output saves a record; ask with 'iodbg identity get record'");
    if (arguments.output.empty() && !arguments.format.empty())
        throw Failure::usage("--format is that of a file; save one with --output FILE");
    if (arguments.item == "mac" && !arguments.carrier.isBoard())
        throw Failure::usage("a supply has no MAC address; leave --index out");
}

void addBoardItems(Report &report, const GetArguments &arguments) {
    Section section = {"", "", {}};
    if (arguments.asksFor("serial"))
        addItems(report, section, kSerialItems);
    if (arguments.asksFor("mac"))
        addItems(report, section, kMacItems);
    if (!section.fields.empty())
        report.parts.emplace_back(section);
}

void addRecord(Console &console, Report &report, const GetArguments &arguments,
               const BspDevinfo &record) {
    const Carrier &carrier = arguments.carrier;
    Section section = {"record", "Product record of " + carrier.name(), {}};
    if (carrier.isBoard()) {
        const Verdict verdict = judge(record);
        addVerdict(section, verdict);
        if (verdict.status() != BSP_OK)
            report.tried(section.key, verdict.status(), {});
    }
    addFields(section, carrier, record);
    if (!arguments.output.empty()) {
        const Destination destination = {arguments.output, arguments.isForced};
        saveRecord(console, destination, arguments.format, carrier, record);
        section.add("output", "Saved in", textCell(destination.name()));
    }
    report.parts.emplace_back(section);
}

/** A supply has its serial number in its record alone. */
void addSupplySerial(Report &report, const BspDevinfo &record) {
    Section section = {"", "", {}};
    const ByteView serial(reinterpret_cast<const uint8_t *>(record.serial), sizeof(record.serial));
    section.add("serial_number", "Serial number", textCell(fieldText(serial)));
    report.parts.emplace_back(section);
}

ExitCode get(Console &console, const GetArguments &arguments) {
    checkArguments(arguments);
    const Carrier &carrier = arguments.carrier;
    Report report;
    if (carrier.isBoard())
        addBoardItems(report, arguments);
    if (arguments.asksFor("record") || !carrier.isBoard()) {
        BspDevinfo record;
        require(readRecord(carrier, record), "read the record of " + carrier.name());
        if (arguments.item == "serial")
            addSupplySerial(report, record);
        else
            addRecord(console, report, arguments, record);
    }
    return console.print(report);
}

Parser itemName(std::string &target) {
    return oneOf(target, {"serial", "mac", "record"});
}

void defineIdentity(Command &identity) {

    const auto arguments = std::make_shared<GetArguments>();
    Command &command = identity.command("get", "Read what the board knows of itself");
    command.optionalArgument("ITEM", "serial|mac|record (default: all)", itemName(arguments->item));
    command.option("--index", kCarrierWords, "Whose (default board)", carrier(arguments->carrier));
    command.option("--output", "FILE", "Save the record, - is standard output",
                   fileName(arguments->output));
    addFormatOption(command, arguments->format);
    command.flag("--force", kForceHelp, arguments->isForced);
    command.example("iodbg identity get")
        .example("iodbg identity get record --index supply1 --output saved.rec")
        .example("iodbg identity get record --output board.json --format json");
    command.onlyAfter(requireKernelModule);
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return get(console, *arguments); });

    addIdentityNewCommand(identity);
    addIdentitySetCommands(identity);
}

} // namespace

void addIdentityCommands(Command &root) {
    root.group("identity", "Serial number, MAC address, product records", defineIdentity);
}

} // namespace iodbg
