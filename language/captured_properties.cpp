#include "language/captured_properties.h"

#include "language/property_names.h"
#include "language/property_table.h"

#include <iterator>

namespace language {

namespace {

/** A property that boards have too: type, unit, words and sentence are those of there. */
constexpr CapturedProperty common(std::string_view name, CapturedProperty captured = {}) {
    const Property &property = propertyOf(name);
    captured.name = property.name;
    captured.subject = property.subject;
    captured.type = property.type;
    captured.unit = property.unit;
    captured.words = property.words;
    if (*captured.sentence == '\0')
        captured.sentence = property.sentence;
    captured.isCommon = true;
    return captured;
}

constexpr uint32_t kFirstLiveByte = 96; // of an SFP module's diagnostics: readings, state, flags
constexpr uint32_t kBehindLiveBytes = 120;
constexpr int64_t kTolerableDegrees = 10;
constexpr int64_t kTolerablePercent = 10;

constexpr char kPmbusWord[] = "the word of PMBus, low byte first";
constexpr char kPoeAnswer[] = "the controller's answer behind its sequence number";

constexpr CapturedProperty kCaptured[] = {
    // The unit
    common("model", {.sentence = "Device id, as the library tells it"}),
    common("cmdline"),
    {.name = "system-time",
     .type = Type::Text,
     .sentence = "System clock, in local time",
     .compared = Compared::Clock},
    {.name = "version.hardware", .type = Type::Text, .sentence = "Revision of the hardware"},
    {.name = "version.cpld", .type = Type::Text, .sentence = "Version of the CPLD's logic"},
    {.name = "version.boot-loader",
     .type = Type::Text,
     .sentence = "Version of the boot loader, from the command line"},
    {.name = "version.serial", .sentence = "Device serial version"},
    // Identity
    {.name = "identity.record",
     .type = Type::Word,
     .sentence = "Whether the EEPROM holds a product record, and its CRC is right",
     .words = "missing|damaged|whole"},
    common("identity.serial", {.sentence = "Serial number in the product record"}),
    common("identity.mac", {.sentence = "MAC address in the product record"}),
    {.name = "identity.product-name",
     .type = Type::Text,
     .sentence = "Product name in the product record"},
    {.name = "identity.supply-count", .sentence = "Supplies that the product record names"},
    {.name = "identity.supply-types",
     .type = Type::ByteRow,
     .sentence = "Their types in the product record, a byte for each of six"},
    // Registers, lines, EEPROMs
    common("cpld.#", {.sentence = "Register of the CPLD that the library reads on this model",
                      .lastNumber = 27}),
    common("cpld.#", {.sentence = "Speeds of the fans, a byte for each of two",
                      .compared = Compared::Raw,
                      .firstNumber = 28,
                      .lastNumber = 29}),
    common("cpld.#", {.sentence = "Lines of supplies and fans", .firstNumber = 30}),
    common("gpio.#", {.sentence = "Level of a line that the library uses"}),
    common("eeprom.board"),
    common("eeprom.supply#"),
    {.name = "watchdog.period", .sentence = "Period of the watchdog in the CPLD's units; 0: off"},
    // Power
    {.name = "supply.count", .sentence = "Supplies that the library counts"},
    common("supply.#.present", {.sentence = "Whether its line tells that it is plugged"}),
    {.name = "supply.#.status",
     .subject = Subject::Supply,
     .sentence = "Status that its lines make"},
    {.name = "supply.#.type",
     .subject = Subject::Supply,
     .sentence = "Type, by its line or by the product record"},
    {.name = "supply.#.serial",
     .subject = Subject::PlugInSupply,
     .type = Type::Text,
     .sentence = "Serial number in its EEPROM"},
    {.name = "supply.#.product-name",
     .subject = Subject::PlugInSupply,
     .type = Type::Text,
     .sentence = "Product name in its EEPROM"},
    common("supply.#.input-voltage",
           {.compared = Compared::Measured, .percent = kTolerablePercent, .raw = kPmbusWord}),
    common("supply.#.input-current", {.compared = Compared::Measured,
                                      .tolerance = 200,
                                      .percent = kTolerablePercent,
                                      .raw = kPmbusWord}),
    common("supply.#.input-power", {.compared = Compared::Measured,
                                    .tolerance = 20000,
                                    .percent = kTolerablePercent,
                                    .raw = kPmbusWord}),
    common("supply.#.output-voltage",
           {.compared = Compared::Measured, .percent = kTolerablePercent, .raw = kPmbusWord}),
    common("supply.#.output-current", {.compared = Compared::Measured,
                                       .tolerance = 200,
                                       .percent = kTolerablePercent,
                                       .raw = kPmbusWord}),
    common("supply.#.output-power", {.compared = Compared::Measured,
                                     .tolerance = 20000,
                                     .percent = kTolerablePercent,
                                     .raw = kPmbusWord}),
    common("supply.#.temperature1",
           {.compared = Compared::Measured, .tolerance = kTolerableDegrees, .raw = kPmbusWord}),
    common("supply.#.temperature2",
           {.compared = Compared::Measured, .tolerance = kTolerableDegrees, .raw = kPmbusWord}),
    common("supply.#.temperature3",
           {.compared = Compared::Measured, .tolerance = kTolerableDegrees, .raw = kPmbusWord}),
    // Chassis
    {.name = "fan.level", .sentence = "Level of all fans, 1 to 10"},
    common("fan.#.present", {.sentence = "Whether its line tells that it is plugged"}),
    common("fan.#.speed",
           {.compared = Compared::Measured, .tolerance = 240, .percent = kTolerablePercent}),
    common("temperature.sensor", {.compared = Compared::Measured, .tolerance = kTolerableDegrees}),
    common("rtc.time", {.sentence = "What the calendar clock tells", .compared = Compared::Clock}),
    {.name = "rtc.state",
     .subject = Subject::ClockChip,
     .type = Type::Word,
     .sentence = "Whether it holds a date, and has had power since it was set",
     .words = "good|lost|invalid"},
    {.name = "rtc.registers",
     .subject = Subject::ClockChip,
     .type = Type::ByteRow,
     .sentence = "Its registers 2, 3, 4, 5, 7 and 8",
     .compared = Compared::Clock},
    // Power over Ethernet
    {.name = "poe.presence",
     .subject = Subject::PoeController,
     .type = Type::Word,
     .sentence = "Whether the controller's line tells that it is there; one that is missing is "
                 "asked nothing",
     .words = "missing|present"},
    {.name = "poe.firmware",
     .subject = Subject::PoeController,
     .sentence = "What the last upgrade of its firmware left; 0: usable, 1: started, 2: failed"},
    {.name = "poe.version",
     .subject = Subject::PoeController,
     .type = Type::Text,
     .sentence = "Version of its firmware",
     .raw = kPoeAnswer},
    {.name = "poe.initialised",
     .subject = Subject::PoeController,
     .type = Type::Word,
     .sentence = "Whether it has been initialised; the library tells no failure of this question",
     .words = "no|yes|no-answer"},
    common("poe.budget", {.raw = kPoeAnswer}),
    common("poe.drawn", {.compared = Compared::Measured,
                         .tolerance = 5000,
                         .percent = kTolerablePercent,
                         .raw = kPoeAnswer}),
    {.name = "poe.#.detection",
     .subject = Subject::PoePort,
     .sentence = "What the detection found, in the controller's code",
     .raw = kPoeAnswer},
    {.name = "poe.#.class",
     .subject = Subject::PoePort,
     .sentence = "Class of the device; 9: unknown"},
    {.name = "poe.#.fault",
     .subject = Subject::PoePort,
     .type = Type::Word,
     .sentence = "Whether the port has a fault",
     .words = "no|yes"},
    {.name = "poe.#.delivering",
     .subject = Subject::PoePort,
     .type = Type::Word,
     .sentence = "Whether the port delivers power; one that does not is not measured",
     .words = "no|yes"},
    {.name = "poe.#.voltage",
     .subject = Subject::PoePort,
     .sentence = "Voltage of the port",
     .unit = "mV",
     .compared = Compared::Measured,
     .percent = kTolerablePercent,
     .raw = kPoeAnswer},
    {.name = "poe.#.current",
     .subject = Subject::PoePort,
     .sentence = "Current of the port",
     .unit = "mA",
     .compared = Compared::Measured,
     .tolerance = 20,
     .percent = kTolerablePercent},
    common("poe.#.power",
           {.compared = Compared::Measured, .tolerance = 1000, .percent = kTolerablePercent}),
    {.name = "poe.#.temperature",
     .subject = Subject::PoePort,
     .sentence = "Temperature of the port's part of the controller",
     .compared = Compared::Measured,
     .tolerance = kTolerableDegrees},
    {.name = "poe.#.mode",
     .subject = Subject::PoePort,
     .sentence = "Mode, 0 to 2 or 5",
     .raw = kPoeAnswer},
    {.name = "poe.#.limit",
     .subject = Subject::PoePort,
     .sentence = "Power limit",
     .unit = "mW",
     .raw = kPoeAnswer},
    {.name = "poe.#.inrush-mode", .subject = Subject::PoePort, .sentence = "Inrush mode"},
    {.name = "poe.#.priority",
     .subject = Subject::PoePort,
     .sentence = "Priority, 1 is the most important; 0: above 1"},
    // Transceivers
    {.name = "sfp.#.present",
     .subject = Subject::Cage,
     .type = Type::Word,
     .sentence = "Whether a module is in the cage",
     .words = "no|yes"},
    {.name = "sfp.#.transmitter",
     .subject = Subject::Cage,
     .type = Type::Word,
     .sentence = "Whether the transmitter is switched on",
     .words = "off|on"},
    {.name = "sfp.#.rx-loss",
     .subject = Subject::Cage,
     .type = Type::Word,
     .sentence = "Whether the line tells that no signal arrives",
     .words = "no|yes"},
    {.name = "sfp.#.tx-fault",
     .subject = Subject::Cage,
     .type = Type::Word,
     .sentence = "Whether the line tells that the transmitter has a fault",
     .words = "no|yes"},
    common("sfp.#.id"),
    common("sfp.#.diagnostics", {.liveFrom = kFirstLiveByte, .liveBehind = kBehindLiveBytes}),
    {.name = "sfp.#.temperature",
     .subject = Subject::Cage,
     .sentence = "Temperature of the module, by its diagnostics",
     .unit = "thousandths of degrees C",
     .compared = Compared::Measured,
     .tolerance = kTolerableDegrees * 1000},
    {.name = "sfp.#.supply-voltage",
     .subject = Subject::Cage,
     .sentence = "Voltage at the module, by its diagnostics",
     .unit = "mV",
     .compared = Compared::Measured,
     .percent = kTolerablePercent},
    {.name = "sfp.#.bias-current",
     .subject = Subject::Cage,
     .sentence = "Current of the laser, by the module's diagnostics",
     .unit = "uA",
     .compared = Compared::Measured,
     .tolerance = 1000,
     .percent = 25},
    {.name = "sfp.#.tx-power",
     .subject = Subject::Cage,
     .sentence = "Light that is sent, by the module's diagnostics",
     .unit = "uW",
     .compared = Compared::Measured,
     .tolerance = 10,
     .percent = 25},
    common("sfp.#.rx-power", {.sentence = "Light that arrives, by the module's diagnostics",
                              .compared = Compared::Measured,
                              .tolerance = 10,
                              .percent = 25}),
    {.name = "sfp.#.copper",
     .subject = Subject::Cage,
     .sentence = "Whether the module has a copper port, and the mode of its PHY: 0 none, 1 mode 4, "
                 "2 mode 12, 3 another mode"},
    {.name = "sfp.#.phy.#",
     .subject = Subject::Cage,
     .type = Type::Register,
     .sentence = "Register of a copper module's PHY, but those that forget when they are read"},
    // Boot settings
    {.name = "boot.mode", .sentence = "Which system the boot loader starts"},
    {.name = "boot.flag", .sentence = "Boot flag", .words = "none"},
    {.name = "boot.baudrate", .sentence = "Rate of the console at the start", .unit = "baud"},
    {.name = "boot.console-password",
     .type = Type::Word,
     .sentence = "Whether the console asks for a password",
     .words = "no|yes"},
    {.name = "boot.user-password",
     .type = Type::Word,
     .sentence = "Whether the user password is in force",
     .words = "no|yes"},
    {.name = "boot.has-password",
     .type = Type::Word,
     .sentence = "Whether a boot password is stored",
     .words = "no|yes"},
    {.name = "boot.password",
     .type = Type::Text,
     .sentence = "Boot password",
     .compared = Compared::Secret},
    {.name = "boot.block",
     .type = Type::ByteRow,
     .sentence = "The block with the settings, 256 bytes",
     .compared = Compared::Secret},
    // Flash
    common("flash.#.geometry"),
    common("flash.#.bad-blocks"),
    common("flash.#.write-protected"),
    {.name = "flash.#.crc32",
     .subject = Subject::Partition,
     .type = Type::Text,
     .sentence = "CRC-32 of what the partition holds, without bad blocks; of the boot settings "
                 "with secrets alone"},
    common("flash.#.content",
           {.sentence = "What the partition holds; what is left out reads as erased, as do bad "
                        "blocks; captured only when it is asked for"}),
    {.name = "image.#.header",
     .subject = Subject::Partition,
     .type = Type::ByteRow,
     .sentence = "The header block of a bank's image, 512 bytes"},
};

bool isFor(const CapturedProperty &row, const std::vector<uint32_t> &numbers) {
    return numbers.empty() ||
           (numbers.front() >= row.firstNumber && numbers.front() <= row.lastNumber);
}

} // namespace

std::span<const CapturedProperty> capturedProperties() {
    return kCaptured;
}

std::optional<CapturedName> capturedName(const std::string &name) {
    for (const CapturedProperty &row : kCaptured) {
        const auto numbers = numbersIn(name, row.name);
        if (numbers.has_value() && isFor(row, *numbers) && capturedName(row, *numbers) == name)
            return CapturedName{&row, *numbers};
    }
    return {};
}

std::string capturedName(const CapturedProperty &row, std::span<const uint32_t> numbers) {
    std::string name = row.name;
    for (const uint32_t number : numbers) {
        if (const size_t place = name.find('#'); place != std::string::npos)
            name.replace(place, 1, std::to_string(number));
    }
    return name;
}

CapturedPlace capturedPlace(const std::string &name) {
    const auto known = capturedName(name);
    if (!known)
        return {std::size(kCaptured), {}, name};
    return {static_cast<size_t>(known->row - kCaptured),
            {known->numbers.begin(), known->numbers.end()},
            ""};
}

const char *comparedWord(Compared compared) {
    constexpr const char *kWords[] = {"state", "measured", "clock", "counter", "raw", "secret"};
    return kWords[static_cast<size_t>(compared)];
}

} // namespace language
