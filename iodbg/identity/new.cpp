// iodbg identity new: a product record for a unit that has none.

#include "iodbg/identity/new.h"

#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/identity/record_file.h"
#include "iodbg/identity/record_words.h"
#include "iodbg/identity/set.h"

#include <algorithm>
#include <array>
#include <optional>

namespace iodbg {

namespace {

/** A field that is asked for, and what it usually is. */
struct AskedField {
    const char *key;
    const char *option;
    const char *value;
    const char *help;
    const char *usual; // null: every unit has its own
    uint32_t most = 0; // of a number; 0: it is none
};

constexpr AskedField kAskedFields[] = {
    {"serial_number", "--serial", "TEXT", "1 to 31 printable characters; a supply's: up to 24",
     nullptr},
    {"base_mac", "--mac", "MAC", "AA:BB:CC:DD:EE:FF; the unit uses this and the next one", nullptr},
    {"product_name", "--product-name", "TEXT",
     "Up to 32 characters; product data 2 (default: none)", ""},
    {"supply_count", "--supply-count", "N", "Of models whose record tells it, 0-6 (default 2)", "2",
     BSP_SUPPLIES_MAX},
    {"supply_types_hex", "--supply-types", "HEX", "A byte for each supply (default 0101)", "0101"},
    {"product_data_1_hex", "--product-data-1", "HEX", "Up to 16 bytes (default: zeros)", "00"},
    {"product_data_3_hex", "--product-data-3", "HEX", "Up to 4 bytes (default: zeros)", "00"},
    {"reserved_1_hex", "--reserved-1", "HEX", "Up to 2 bytes (default: zeros)", "00"},
    {"reserved_2_hex", "--reserved-2", "HEX", "Up to 17 bytes (default: zeros)", "00"},
};

struct NewArguments {
    Carrier carrier;
    std::array<std::optional<std::string>, std::size(kAskedFields)> words;
    std::string output;
    std::string format;
    bool isStored = false;
    bool isForced = false;
    bool isDryRun = false;
};

/** Where the record goes is said once. */
void checkPlace(const NewArguments &arguments) {
    if (arguments.isStored == !arguments.output.empty())
        throw Failure::usage("say where the record goes: --output FILE, or --store for the unit");
    if (arguments.isStored && !arguments.format.empty())
        throw Failure::usage("--format is that of a file; leave it out with --store");
    if (arguments.isDryRun && !arguments.isStored)
        throw Failure::usage("--dry-run goes with --store; a file can simply be made");
}

/** The word for a field; none where the carrier's record has no such field. */
std::optional<std::string> wordFor(const NewArguments &arguments, size_t index) {
    const AskedField &asked = kAskedFields[index];
    const std::optional<std::string> &given = arguments.words[index];
    if (fieldOf(asked.key, arguments.carrier) == nullptr) {
        if (given)
            throw Failure::usage(std::string(asked.option) + ": the record of " +
                                 arguments.carrier.name() + " has no such field; leave it out");
        return {};
    }
    if (!given && asked.usual == nullptr)
        throw Failure::usage(std::string(asked.option) + " is required: every unit has its own");
    return given ? *given : asked.usual;
}

/** Stores a field; a supply's may be shorter than the board's, which took the word. */
void storeAsked(const AskedField &asked, const Carrier &carrier, const std::string &word,
                BspDevinfo &record) {
    try {
        storeField(*fieldOf(asked.key, carrier), carrier, word, record);
    } catch (const language::Refused &refusal) {
        throw Failure::usage(std::string(asked.option) + ": " + refusal.what());
    }
}

/** Takes a word that the board's record could hold. */
void takeWord(std::optional<std::string> &target, const AskedField &asked,
              const std::string &word) {
    uint32_t checked = 0;
    if (asked.most != 0)
        number(checked, asked.most)(word);
    BspDevinfo tried = {};
    storeField(*fieldOf(asked.key, Carrier{}), Carrier{}, word, tried);
    target = word;
}

BspDevinfo newRecord(const NewArguments &arguments) {
    const Carrier &carrier = arguments.carrier;
    BspDevinfo record = {};
    for (size_t i = 0; i < std::size(kAskedFields); ++i) {
        const AskedField &asked = kAskedFields[i];
        if (const std::optional<std::string> word = wordFor(arguments, i))
            storeAsked(asked, carrier, *word, record);
    }
    if (const std::string flaw = flawOf(carrier, record); !flaw.empty())
        throw Failure::usage(flaw + "; give the unit's own");
    if (carrier.isBoard()) {
        storeField(*fieldOf("magic", carrier), carrier, BSP_DEVINFO_MAGIC, record);
        renewCrc(record);
    }
    return record;
}

/** Whether the memory is as its chip comes, or was wiped. A damaged record is one, too. */
bool isBlank(const Carrier &carrier, BspDevinfo stored) {
    return std::all_of(kRecordFields.begin(), kRecordFields.end(), [&](const ShownField &field) {
        const std::span<uint8_t> bytes = bytesOf(field, carrier, stored);
        return std::all_of(bytes.begin(), bytes.end(),
                           [](uint8_t byte) { return byte == 0x00 || byte == 0xFF; });
    });
}

/** Refuses to take the identity of a unit away that has one. */
void requireBlank(const NewArguments &arguments) {
    if (arguments.isForced)
        return;
    BspDevinfo stored;
    const Carrier &carrier = arguments.carrier;
    require(readRecord(carrier, stored), "read the record of " + carrier.name());
    if (isBlank(carrier, stored))
        return;
    const bool isDamaged = carrier.isBoard() && judge(stored).status() != BSP_OK;
    throw Failure::usage(carrier.name() + " has a " + (isDamaged ? "damaged " : "") +
                         "record, which would be lost; see 'iodbg identity get', or replace it "
                         "with --force");
}

ExitCode makeNew(Console &console, const NewArguments &arguments) {
    checkPlace(arguments);
    const BspDevinfo record = newRecord(arguments);
    if (arguments.isStored) {
        requireKernelModule();
        requireBlank(arguments);
        return storeRecord(console, arguments.carrier, record, arguments.isDryRun);
    }
    const Destination destination = {arguments.output, arguments.isForced};
    saveRecord(console, destination, arguments.format, arguments.carrier, record);
    Section section = {"record", "New product record of " + arguments.carrier.name(), {}};
    addFields(section, arguments.carrier, record);
    section.add("output", "Saved in", textCell(destination.name()));
    return console.print({{section}, {}});
}

} // namespace

void addIdentityNewCommand(Command &identity) {
    const auto arguments = std::make_shared<NewArguments>();
    Command &command = identity.command("new", "Make a product record for a unit that has none");
    for (size_t i = 0; i < std::size(kAskedFields); ++i) {
        const AskedField &asked = kAskedFields[i];
        command.option(asked.option, asked.value, asked.help,
                       [arguments, i](const std::string &word) {
                           takeWord(arguments->words[i], kAskedFields[i], word);
                       });
    }
    command.option("--index", kCarrierWords, "Whose (default board)", carrier(arguments->carrier));
    command.flag("--store", "Store it in the unit and read it back", arguments->isStored);
    command.option("--output", "FILE", "Save it in a file, - is standard output",
                   fileName(arguments->output));
    addFormatOption(command, arguments->format);
    command.flag("--force", "Replace a file that exists, or the record of a unit that has one",
                 arguments->isForced);
    command.flag("--dry-run", "With --store: show what would change, change nothing",
                 arguments->isDryRun);
    command.detail("Magic and CRC are iodbg's. Fields that are not given are what they usually "
                   "are. Rows of bytes that are shorter than their field end with zeros.");
    command.example("iodbg identity new --serial SN0001 --mac 02:00:5E:10:00:40 --store");
    command.example("iodbg identity new --serial SN0001 --mac 02:00:5E:10:00:40 --output new.json "
                    "--format json");
    command.does([arguments](Console &console) { return makeNew(console, *arguments); });
}

} // namespace iodbg
