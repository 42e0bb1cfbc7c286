// iodbg identity set: every change is a change of a whole record, and is read back.

#include "iodbg/identity/set.h"

#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/identity/record.h"
#include "iodbg/identity/record_json.h"

#include <algorithm>
#include <cstring>

namespace iodbg {

namespace {

/** What brings the board's record into the wanted state, whatever it holds. */
std::string repairOf(const Carrier &carrier, const BspDevinfo &wanted) {
    if (!carrier.isBoard())
        return "run the command again";
    return "store the whole record with: iodbg eeprom write " + std::to_string(BSP_DEVINFO_OFFSET) +
           " " + hexBytes(bytesOf(wanted));
}

Update updateOf(const Carrier &carrier, const BspDevinfo &before, const BspDevinfo &wanted,
                const std::function<int32_t()> &write) {
    const auto readBack = [carrier](Bytes &bytes) {
        BspDevinfo record;
        const int32_t status = readRecord(carrier, record);
        bytes = bytesOf(record);
        return status;
    };
    return {"the record of " + carrier.name(), bytesOf(before), bytesOf(wanted), write, readBack,
            repairOf(carrier, wanted)};
}

BspDevinfo storedRecord(const Carrier &carrier) {
    BspDevinfo record;
    require(readRecord(carrier, record), "read the record of " + carrier.name());
    return record;
}

/** The library's setters read the record first, so there must be a good one. */
BspDevinfo goodBoardRecord() {
    const BspDevinfo record = storedRecord(Carrier{});
    if (const int32_t status = judge(record).status(); status != BSP_OK)
        throw Failure::board("change a part of the board's record", status,
                             "a damaged record can only be replaced: write a whole one with "
                             "'iodbg identity set record --file FILE'");
    return record;
}

/** Changes one field of the board's record through the library's setter for it. */
ExitCode setField(Console &console, BspDevinfo wanted, const BspDevinfo &before,
                  const std::function<int32_t()> &setter, bool isDryRun) {
    renewCrc(wanted);
    return carryOut(console, updateOf(Carrier{}, before, wanted, setter),
                    changedFields(Carrier{}, before, wanted), isDryRun);
}

bool isSerialCharacter(char character) {
    return character > ' ' && character <= '~';
}

void checkSerial(const std::string &serial) {
    if (serial.empty() || serial.size() > BSP_SERIAL_NUMBER_MAX ||
        !std::all_of(serial.begin(), serial.end(), isSerialCharacter))
        throw Failure::usage("a serial number has 1 to " + std::to_string(BSP_SERIAL_NUMBER_MAX) +
                             " printable ASCII characters and no spaces");
}

ExitCode setSerial(Console &console, const std::string &serial, bool isDryRun) {
    checkSerial(serial);
    const BspDevinfo before = goodBoardRecord();
    BspDevinfo wanted = before;
    std::memset(wanted.serial, 0, sizeof(wanted.serial));
    std::memcpy(wanted.serial, serial.data(), serial.size());
    const auto setter = [&] {
        return ioSerialNumSet(serial.data(), static_cast<int32_t>(serial.size()));
    };
    return setField(console, wanted, before, setter, isDryRun);
}

ExitCode setMac(Console &console, const Mac &mac, bool isDryRun) {
    const BspDevinfo before = goodBoardRecord();
    BspDevinfo wanted = before;
    std::copy(mac.begin(), mac.end(), wanted.mac);
    // The stored address is the base, whatever the index.
    return setField(
        console, wanted, before, [&] { return ioMacAddrSet(0, mac.data()); }, isDryRun);
}

struct RecordArguments {
    Carrier carrier;
    std::string file;
    bool isCrcRenewed = false;
    bool isDryRun = false;
};

/** Refuses a file that would be stored, but not as what it is. */
void checkRecord(const RecordArguments &arguments, const BspDevinfo &record) {
    const auto refuse = [&](const std::string &reason) {
        throw Failure(ExitCode::Host, inputName(arguments.file) + " " + reason);
    };
    if (!arguments.carrier.isBoard()) {
        if (const int offset = firstByteWithoutPlace(record); offset >= 0)
            refuse("has data at byte " + std::to_string(offset) +
                   ", where a supply's record has none; give a file of 'iodbg identity get record "
                   "--index " +
                   arguments.carrier.word() + "'");
        return;
    }
    const Verdict verdict = judge(record);
    if (!verdict.hasMagic)
        refuse("does not begin with " BSP_DEVINFO_MAGIC "; give a file of the board's record");
    if (!verdict.isCrcRight() && !arguments.isCrcRenewed)
        refuse("does not match its own CRC; give an undamaged file, or --renew-crc when it was "
               "edited on purpose");
}

/** A file of either kind. */
BspDevinfo recordOf(const RecordArguments &arguments) {
    constexpr size_t kLongestJson = 16384;
    const std::string name = inputName(arguments.file);
    const Bytes content = readHostFileOrInput(arguments.file, kLongestJson);
    if (isRecordJson(content))
        return recordFromJson(arguments.carrier, content, name);
    BspDevinfo record;
    if (content.size() != sizeof(record))
        throw Failure(ExitCode::Host, name + " has " + std::to_string(content.size()) +
                                          " bytes; a record has " + std::to_string(sizeof(record)) +
                                          ", or is JSON");
    std::memcpy(&record, content.data(), sizeof(record));
    return record;
}

BspDevinfo recordIn(const RecordArguments &arguments) {
    BspDevinfo record = recordOf(arguments);
    checkRecord(arguments, record);
    if (arguments.carrier.isBoard())
        renewCrc(record);
    return record;
}

/** The bytes of a supply's record that the library clears with every write. */
void addClearedBytes(const Carrier &carrier, std::vector<Change> &changes) {
    if (carrier.isBoard() || changes.empty())
        return;
    BspSupplyRecord stored{};
    require(bspPowerPieGet(carrier.supply, &stored), "read the record of " + carrier.name());
    const std::string unused = hexBytes(stored.unused);
    const std::string cleared(unused.size(), '0');
    if (unused != cleared)
        changes.push_back({"unused_hex", unused, cleared});
}

ExitCode setRecord(Console &console, const RecordArguments &arguments) {
    return storeRecord(console, arguments.carrier, recordIn(arguments), arguments.isDryRun);
}

void addDryRun(Command &command, bool &target) {
    command.flag("--dry-run", "Show what would change, change nothing", target);
}

void addSetSerial(Command &group) {
    struct Arguments {
        std::string serial;
        bool isDryRun = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    Command &command = group.command("serial", "Store the board's serial number");
    command.argument("TEXT", "1 to 31 printable characters", text(arguments->serial));
    addDryRun(command, arguments->isDryRun);
    command.example("iodbg identity set serial SN0001 --dry-run")
        .example("iodbg identity set serial SN0001");
    command.does([arguments](Console &console) {
        return setSerial(console, arguments->serial, arguments->isDryRun);
    });
}

void addSetMac(Command &group) {
    struct Arguments {
        Mac mac{};
        bool isDryRun = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    Command &command = group.command("mac", "Store the board's base MAC address");
    command.argument("MAC", "AA:BB:CC:DD:EE:FF",
                     [arguments](const std::string &word) { arguments->mac = parseMac(word); });
    addDryRun(command, arguments->isDryRun);
    command.example("iodbg identity set mac 02:00:5E:10:00:40");
    command.does([arguments](Console &console) {
        return setMac(console, arguments->mac, arguments->isDryRun);
    });
}

void addSetRecord(Command &group) {
    const auto arguments = std::make_shared<RecordArguments>();
    Command &command = group.command("record", "Store a whole record from a file");
    command.option("--index", kCarrierWords, "Whose (default board)", carrier(arguments->carrier));
    command.requiredOption(
        "--file", "FILE",
        "As 'identity get record --output' saves it, 128 bytes or JSON; - is standard input",
        fileName(arguments->file));
    command.flag("--renew-crc", "Accept a file whose CRC does not match, and store the right one",
                 arguments->isCrcRenewed);
    addDryRun(command, arguments->isDryRun);
    command.example("iodbg identity set record --file board.rec --dry-run")
        .example("iodbg identity set record --file supply1.rec --index supply1");
    command.does([arguments](Console &console) { return setRecord(console, *arguments); });
}

} // namespace

ExitCode storeRecord(Console &console, const Carrier &carrier, const BspDevinfo &wanted,
                     bool isDryRun) {
    const BspDevinfo before = storedRecord(carrier);
    std::vector<Change> changes = changedFields(carrier, before, wanted);
    addClearedBytes(carrier, changes);
    const auto write = [&] {
        BspDevinfo record = wanted;
        return ioDevinfoSet(carrier.devinfoIndex(), &record);
    };
    return carryOut(console, updateOf(carrier, before, wanted, write), changes, isDryRun);
}

void addIdentitySetCommands(Command &identity) {
    Command &group = identity.group("set", "Change the board's records");
    group.onlyAfter(requireKernelModule);
    addSetSerial(group);
    addSetMac(group);
    addSetRecord(group);
}

} // namespace iodbg
