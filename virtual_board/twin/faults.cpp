// Readings that failed, as rules that make them fail the same way.

#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/twin/parts.h"
#include "virtual_board/words/fault_text.h"

#include <algorithm>
#include <iterator>

namespace vb {

namespace {

constexpr char kProgramsFailed[] =
    "its failure came from the unit's programs, not from its devices";

/** How a rule names what is asked for a property. */
struct FailureRow {
    const char *name;
    const char *device; // "i2c:0.1.0x4f"
    const char *op;
    const char *effect;      // "refuse": with the reading's status; "open-fails": as opening did
    const char *offset = ""; // '#': the property's number
};

constexpr FailureRow kFailures[] = {
    {"cpld.#", "cpld", "read", "refuse", "#"},
    {"gpio.#", "gpio", "read", "refuse", "#"},
    {"eeprom.board", "i2c:0.0.0x50", "read", "refuse"},
    {"temperature.sensor", "i2c:0.1.0x4f", "read", "refuse"},
    {"rtc.registers", "i2c:0.1.0x51", "read", "refuse"},
    {"flash.#.geometry", "/dev/mtd#", "open", "open-fails"},
    {"flash.#.crc32", "mtd#", "read", "fails=EIO"},
    {"boot.mode", "mtd4", "read", "fails=EIO", "0"},
    {"cmdline", "/proc/cmdline", "open", "open-fails=EIO"},
};

// Of an EEPROM that fails; one that holds no record answers, and has no serial number either.
constexpr FailureRow kRecordFailure = {"identity.serial", "i2c:0.0.0x51", "read", "refuse"};

// When the controller as a whole answers.
constexpr FailureRow kPoeFailures[] = {
    {"poe.budget", "poe", "write", "no-answer", "0x4b"},
    {"poe.drawn", "poe", "write", "no-answer", "0x41"},
};

// When it does not: it does not acknowledge its address, or takes frames and keeps silent.
constexpr FailureRow kDeadPoe = {"poe.version", "i2c:16.0.0x20", "any", "no-answer"};
constexpr FailureRow kSilentPoe = {"poe.version", "poe", "write", "no-answer"};

/** What is asked of a port. A rule for a question fails one port. */
struct QuestionRow {
    const char *name;
    const char *question;
};

constexpr QuestionRow kPortFailures[] = {{"poe.#.detection", "0x42"},
                                         {"poe.#.voltage", "0x44"},
                                         {"poe.#.mode", "0x48"},
                                         {"poe.#.limit", "0x49"}};

/** What supplies and modules have, each on a channel of its own. */
struct ChannelRow {
    const char *name;
    const I2cPlace &first; // the channel of number 1
    uint32_t device;
    int32_t offset; // -1: all
};

constexpr ChannelRow kSupplyFailures[] = {
    {"eeprom.supply#", kSupplyEeprom, kSupplyEeprom.device, -1},
    {"supply.#.input-voltage", kSupplyPmbus, kSupplyPmbus.device, 0x88},
    {"supply.#.input-current", kSupplyPmbus, kSupplyPmbus.device, 0x89},
    {"supply.#.input-power", kSupplyPmbus, kSupplyPmbus.device, 0x97},
    {"supply.#.output-voltage", kSupplyPmbus, kSupplyPmbus.device, 0x8B},
    {"supply.#.output-current", kSupplyPmbus, kSupplyPmbus.device, 0x8C},
    {"supply.#.output-power", kSupplyPmbus, kSupplyPmbus.device, 0x96},
    {"supply.#.temperature1", kSupplyPmbus, kSupplyPmbus.device, 0x8D},
    {"supply.#.temperature2", kSupplyPmbus, kSupplyPmbus.device, 0x8E},
    {"supply.#.temperature3", kSupplyPmbus, kSupplyPmbus.device, 0x8F},
};

/** What is found of the partitions by what they are for. */
struct PartitionUse {
    uint32_t partition;
    const char *unit;
    std::optional<int64_t> index;
};
constexpr PartitionUse kPartitionUses[] = {{kBootSettingsPartition, "boot-settings", {}},
                                           {kOsBank0Partition, "bank", 0},
                                           {kOsBank1Partition, "bank", 1}};

/** Whether something was found of what a partition is for. */
bool isFound(const Twin &twin, uint32_t partition, const char *code) {
    const auto *use =
        std::find_if(std::begin(kPartitionUses), std::end(kPartitionUses),
                     [partition](const PartitionUse &row) { return row.partition == partition; });
    return use != std::end(kPartitionUses) &&
           std::any_of(twin.unit.findings.begin(), twin.unit.findings.end(),
                       [&](const language::CapturedFinding &finding) {
                           return finding.code == code && finding.unit == use->unit &&
                                  finding.index == use->index;
                       });
}

const char *openErrorOf(const Twin &twin, uint32_t partition) {
    if (isFound(twin, partition, "partition-missing"))
        return "ENOENT";
    return isFound(twin, partition, "partition-not-permitted") ? "EACCES" : "EIO";
}

/** Adds a rule; false when the table is full. */
bool addRule(Twin &twin, const FaultWords &words) {
    return addFault(twin.board().faults, parseFault(words)) != 0;
}

void makeRule(Twin &twin, const std::string &name, FaultWords words) {
    const int32_t status = twin.unit.find(name)->failure()->status;
    if (words.effect == "refuse")
        words.effect += "=" + std::to_string(status);
    words.when = "from";
    if (status >= 0 && words.effect.starts_with("refuse"))
        twin.lack(name, kProgramsFailed);
    else if (!addRule(twin, words))
        twin.lack(name, "the board has no room for one more rule; reading it does not fail");
}

void makeSupplyRules(Twin &twin, uint32_t supply) {
    for (const ChannelRow &row : kSupplyFailures) {
        const std::string name = twinName(row.name, supply);
        if (!twin.hasFailed(name))
            continue;
        FaultWords words;
        words.device = i2cDeviceText(row.first.bus, row.first.channel + supply - 1, row.device);
        words.op = "read";
        words.effect = "refuse";
        if (row.offset >= 0)
            words.offset = std::to_string(row.offset);
        makeRule(twin, name, words);
        // The library reads no further behind the first that fails, nor does the twin's.
        if (row.offset >= 0)
            return;
    }
}

void makeRules(Twin &twin, const FailureRow &row) {
    for (const language::CapturedReading &reading : twin.unit.properties) {
        const auto known = language::capturedName(reading.name);
        if (!known || !reading.hasFailed() || std::string(known->row->name) != row.name)
            continue;
        const uint32_t number = known->numbers.empty() ? 0 : known->numbers[0];
        FaultWords words;
        words.device = twinName(row.device, number);
        words.op = row.op;
        words.effect = row.effect;
        if (words.effect == "open-fails")
            words.effect += std::string("=") + openErrorOf(twin, number);
        words.offset = twinName(row.offset, number);
        makeRule(twin, reading.name, words);
    }
}

/** The first port that did not answer a question does not here, either. */
void makePortRule(Twin &twin, const char *row, const char *question) {
    bool hasRule = false;
    for (uint32_t port = 1; port <= kPoePorts; ++port) {
        const std::string name = twinName(row, port);
        if (!twin.hasFailed(name))
            continue;
        if (hasRule) {
            twin.lack(name, "a board fails this question for one port only");
            continue;
        }
        FaultWords words;
        words.device = "poe";
        words.op = "write";
        words.offset = question;
        words.effect = "bad-port=" + std::to_string(port - 1);
        makeRule(twin, name, words);
        hasRule = true;
    }
}

void makePoeRules(Twin &twin) {
    const language::CapturedReading *version = twin.unit.find("poe.version");
    if (version != nullptr && version->hasFailed()) {
        const bool isDead = version->failure()->name == "BSP_E_POE_WRITE";
        if (gpioLevel(twin.devices().gpio, kPoeResetGpio)) // else it is held in reset
            makeRules(twin, isDead ? kDeadPoe : kSilentPoe);
        return;
    }
    for (const FailureRow &row : kPoeFailures)
        makeRules(twin, row);
    for (const QuestionRow &row : kPortFailures)
        makePortRule(twin, row.name, row.question);
}

void makeModuleRules(Twin &twin, uint32_t port) {
    const SfpModule &module = sfpModule(twin.board(), port);
    const std::string id = twinName("sfp.#.id", port);
    const std::string page = twinName("sfp.#.diagnostics", port);
    if (module.kind == SfpKind::Dead)
        return;
    const I2cPlace place = placeOfModule(twin.model, port);
    FaultWords words;
    words.op = "read";
    words.effect = "refuse";
    if (twin.hasFailed(id)) {
        words.device = i2cDeviceText(place.bus, place.channel, place.device);
        makeRule(twin, id, words);
    }
    if (twin.hasFailed(page) && sfpHasDiagnostics(module)) {
        words.device = i2cDeviceText(place.bus, place.channel, place.device + 1);
        makeRule(twin, page, words);
    }
}

/** Reading a header takes programs: it fails without the bank's flash when one of them does. */
void tellFailedHeaders(Twin &twin) {
    const uint32_t banks[] = {kOsBank0Partition, kOsBank1Partition};
    for (uint32_t bank = 0; bank < std::size(banks); ++bank) {
        const std::string name = twinName("image.#.header", bank);
        if (twin.hasFailed(name) && !twin.hasFailed(twinName("flash.#.crc32", banks[bank])))
            twin.lack(name, kProgramsFailed);
    }
}

} // namespace

void makeTwinFaults(Twin &twin) {
    for (const FailureRow &row : kFailures)
        makeRules(twin, row);
    if (twin.hasFailed("eeprom.board"))
        makeRules(twin, kRecordFailure);
    for (uint32_t supply = 1; supply <= kSupplies; ++supply)
        makeSupplyRules(twin, supply);
    for (uint32_t port = 1; port <= kMostPorts; ++port) {
        if (isSfpCage(twin.model, port))
            makeModuleRules(twin, port);
    }
    makePoeRules(twin);
    tellFailedHeaders(twin);
}

} // namespace vb
