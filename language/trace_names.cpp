#include "language/trace_names.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace language {

namespace {

struct RegisterName {
    uint32_t first, count;
    const char *name;
};

constexpr RegisterName kRegisterNames[] = {
    {1, 1, "device id"},
    {2, 1, "version"},
    {4, 1, "watchdog"},
    {5, 1, "reset"},
    {6, 1, "control"},
    {7, 1, "lamps"},
    {8, 1, "uplink inputs"},
    {12, 1, "uplink transmitters"},
    {13, 3, "PoE lamps"},
    {16, 3, "SFP receive loss"},
    {19, 3, "SFP presence"},
    {22, 3, "SFP transmit fault"},
    {25, 3, "SFP transmit disable"},
    {28, 2, "fan speeds"},
    {30, 1, "supplies"},
    {31, 1, "fans"},
};

/** Which of its bytes name ports. */
enum class Ports : uint8_t { None, One, Pairs };

struct CommandName {
    uint8_t code;
    const char *name;
    Ports ports = Ports::None;
};

constexpr CommandName kPoeCommands[] = {
    {0x00, "enable all ports"},
    {0x01, "set port enable", Ports::Pairs},
    {0x02, "reset"},
    {0x03, "reset ports", Ports::Pairs},
    {0x04, "set power source"},
    {0x05, "enable port mapping"},
    {0x06, "map port", Ports::One},
    {0x08, "set port function mode", Ports::Pairs},
    {0x09, "set port detection type", Ports::Pairs},
    {0x0A, "port detection trigger", Ports::Pairs},
    {0x0B, "trigger port classification", Ports::Pairs},
    {0x0C, "set port inrush mode", Ports::Pairs},
    {0x0D, "set port forced inrush", Ports::Pairs},
    {0x0E, "set voltage thresholds"},
    {0x0F, "set port disconnect type", Ports::Pairs},
    {0x10, "set power management mode"},
    {0x11, "set extended power management mode"},
    {0x12, "set port power limit type", Ports::Pairs},
    {0x14, "set port power limit", Ports::Pairs},
    {0x15, "set port priority", Ports::Pairs},
    {0x16, "set port event mask"},
    {0x18, "force port power", Ports::Pairs},
    {0x40, "system information"},
    {0x41, "power totals"},
    {0x42, "port status", Ports::One},
    {0x44, "port measurements", Ports::One},
    {0x45, "port counters", Ports::One},
    {0x46, "port events"},
    {0x48, "port configuration", Ports::One},
    {0x49, "port power configuration", Ports::One},
    {0x4A, "voltage thresholds"},
    {0x4B, "power source"},
    {0x4C, "chip addresses"},
    {0x4D, "port function mode", Ports::One},
    {0x4E, "port mapping", Ports::One},
    {0x4F, "port pair measurements", Ports::One},
    {0x50, "chip loads"},
    {0xF0, "write chip register"},
    {0xF1, "read chip register"},
};

constexpr uint8_t kPoeMisc = 0xC0; // with a sub-command behind it

constexpr CommandName kPoeMiscCommands[] = {
    {0x00, "jump to loader"},  {0x01, "save settings"},       {0x02, "clear saved settings"},
    {0x05, "reset settings"},  {0x06, "initialise settings"}, {0x40, "jump to application"},
    {0x80, "block of bank 0"}, {0x81, "block of bank 1"},     {0x82, "block of bank 2"},
    {0x83, "block of bank 3"},
};

constexpr CommandName kPmbusCommands[] = {
    {0x20, "VOUT_MODE"},          {0x88, "READ_VIN"},           {0x89, "READ_IIN"},
    {0x8B, "READ_VOUT"},          {0x8C, "READ_IOUT"},          {0x8D, "READ_TEMPERATURE_1"},
    {0x8E, "READ_TEMPERATURE_2"}, {0x8F, "READ_TEMPERATURE_3"}, {0x96, "READ_POUT"},
    {0x97, "READ_PIN"},
};

const CommandName *commandIn(std::span<const CommandName> names, uint32_t code) {
    for (const CommandName &command : names) {
        if (command.code == code)
            return &command;
    }
    return nullptr;
}

std::string nameIn(std::span<const CommandName> names, uint32_t code) {
    const CommandName *command = commandIn(names, code);
    return command != nullptr ? command->name : "unknown command";
}

std::string frameName(const TraceRecord &record) {
    if (record.stored < 2)
        return "";
    return "PoE " + (record.data[0] == kPoeMisc ? nameIn(kPoeMiscCommands, record.data[1])
                                                : nameIn(kPoeCommands, record.data[0]));
}

} // namespace

const char *kindName(TraceKind kind) {
    switch (kind) {
    case TraceKind::CpldRead:
        return "cpld-read";
    case TraceKind::CpldWrite:
        return "cpld-write";
    case TraceKind::I2cRead:
        return "i2c-read";
    case TraceKind::I2cWrite:
        return "i2c-write";
    case TraceKind::GpioInput:
        return "gpio-input";
    case TraceKind::GpioOutput:
        return "gpio-output";
    case TraceKind::GpioRead:
        return "gpio-read";
    case TraceKind::CpldUpgrade:
        return "cpld-upgrade";
    case TraceKind::OtherRequest:
        return "request";
    case TraceKind::Open:
        return "open";
    case TraceKind::Sleep:
        return "sleep";
    case TraceKind::MtdRead:
        return "mtd-read";
    case TraceKind::MtdWrite:
        return "mtd-write";
    case TraceKind::MtdErase:
        return "mtd-erase";
    case TraceKind::MtdInfo:
        return "mtd-info";
    case TraceKind::MtdIsBad:
        return "mtd-is-bad";
    case TraceKind::MtdMarkBad:
        return "mtd-mark-bad";
    case TraceKind::MtdOther:
        return "mtd-request";
    case TraceKind::MdioRead:
        return "mdio-read";
    case TraceKind::MdioWrite:
        return "mdio-write";
    case TraceKind::Console:
        return "console";
    case TraceKind::Map:
        return "map";
    case TraceKind::Step:
        return "step";
    case TraceKind::Damaged:
        break;
    }
    return "damaged";
}

std::optional<TraceKind> kindNamed(const std::string &name) {
    for (int number = 0; number <= static_cast<int>(TraceKind::Damaged); ++number) {
        const auto kind = static_cast<TraceKind>(number);
        if (name == kindName(kind))
            return kind;
    }
    return std::nullopt;
}

const char *waitName(const TraceRecord &step) {
    constexpr const char *kNames[] = {"the clock", "descriptors", "a lock", "a timer"};
    return kNames[std::min<size_t>(step.value - 1, std::size(kNames) - 1)];
}

const char *registerName(uint32_t reg) {
    for (const RegisterName &known : kRegisterNames) {
        if (reg >= known.first && reg - known.first < known.count)
            return known.name;
    }
    return nullptr;
}

std::optional<uint32_t> poePortOf(const TraceRecord &record) {
    constexpr uint32_t kFirstPort = 2; // behind the command and its number
    constexpr uint32_t kPair = 2;
    constexpr uint32_t kMostPairs = 4;
    constexpr uint8_t kUnused = 0xFF;
    const CommandName *command =
        record.stored > kFirstPort ? commandIn(kPoeCommands, record.data[0]) : nullptr;
    if (command == nullptr || command->ports == Ports::None)
        return std::nullopt;
    const uint32_t count = command->ports == Ports::Pairs ? kMostPairs : 1;
    for (uint32_t i = 1; i < count; ++i) {
        const uint32_t at = kFirstPort + kPair * i;
        if (at < record.stored && record.data[at] != kUnused)
            return std::nullopt;
    }
    return record.data[kFirstPort] != kUnused ? std::optional<uint32_t>(record.data[kFirstPort])
                                              : std::nullopt;
}

bool isPoeFrame(const TraceRecord &record) {
    return record.bus == kPoeBus && record.devAddr == kPoeDevAddr;
}

std::string transferName(const TraceRecord &record) {
    if (isPoeFrame(record))
        return frameName(record);
    if (record.bus == kSystemBus && record.devAddr == kPmbusDevAddr &&
        record.channel >= kFirstSupplyChannel)
        return "supply " + std::to_string(record.channel - kFirstSupplyChannel + 1) + " " +
               nameIn(kPmbusCommands, record.offset);
    return "";
}

} // namespace language
