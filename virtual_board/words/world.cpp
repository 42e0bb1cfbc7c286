#include "virtual_board/words/world.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/create.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/property_types.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vb {

namespace {

using Target = PropertyTarget;

// Model and time

constexpr const char *kTimeModes[] = {"real", "virtual"};

std::string getModel(const Target &target) {
    return hex16Text(target.board().header.devId);
}

std::string getTime(const Target &target) {
    return kTimeModes[target.board().clock.mode == TimeMode::Virtual];
}

void setTime(const Target &target, const std::string &value) {
    const bool isVirtual = language::parseChoice(value, kTimeModes) != 0;
    setTimeMode(target.board().clock, isVirtual ? TimeMode::Virtual : TimeMode::Real, hostNow());
}

std::string getClock(const Target &target) {
    return secondsText(clockNow(target.board().clock, hostNow()));
}

std::string getSystemClock(const Target &target) {
    const int64_t offset = target.board().clock.systemOffsetNs;
    return offset == 0 ? "host" : std::to_string(offset / 1000000000) + " s off the host's";
}

// The kernel's command line

std::string getCommandLine(const Target &target) {
    constexpr size_t kMost = 4096; // as much as kernels have
    std::ifstream file(target.folder.hostPath(kCommandLinePath).text);
    std::string line(kMost, '\0');
    file.read(line.data(), kMost);
    line.resize(static_cast<size_t>(file.gcount()));
    return line.substr(0, line.find('\n'));
}

void setCommandLine(const Target &target, const std::string &value) {
    if (const std::string problem = commandLineProblem(value); !problem.empty())
        throw Refused(problem);
    // A program that reads it meanwhile sees the old line or the new one.
    const std::string written = target.folder.ownFile("cmdline.new").text;
    std::ofstream file(written);
    file << value << '\n';
    file.close();
    target.folder.giveToOwner(written.c_str());
    std::error_code failure;
    if (file.fail())
        failure.assign(errno, std::generic_category());
    else
        std::filesystem::rename(written, target.folder.hostPath(kCommandLinePath).text, failure);
    if (!failure)
        return;
    std::error_code ignored;
    std::filesystem::remove(written, ignored);
    throw Refused("cannot write the command line: " + failure.message());
}

// Registers and lines

std::string getCpld(const Target &target) {
    return hex16Text(target.devices().cpld.reg[target.number]);
}

void setCpld(const Target &target, const std::string &value) {
    target.devices().cpld.reg[target.number] = language::parseNumber<uint16_t>(value, 0, 0xFFFF);
}

std::string getGpio(const Target &target) {
    return gpioLevel(target.devices().gpio, target.number) ? "1" : "0";
}

std::string getLogic(const Target &target) {
    const CpldLogic &logic = target.devices().cpld.logic;
    if (logic.programmings == 0)
        return "factory";
    return std::to_string(logic.size) + " bytes, CRC-32 0x" + hex16Text(logic.crc >> 16).substr(2) +
           hex16Text(logic.crc & 0xFFFF).substr(2) + ", programmed " +
           std::to_string(logic.programmings) + " times";
}

void setGpio(const Target &target, const std::string &value) {
    target.devices().gpio.external[target.number] = language::parseNumber<uint8_t>(value, 0, 1);
}

std::string getDirection(const Target &target) {
    return target.devices().gpio.isOutput[target.number] != 0 ? "output" : "input";
}

// EEPROMs

std::string getBytes(const Eeprom &eeprom, const Target &target) {
    return bytesText(target, eeprom.bytes, eepromSize(eeprom), "EEPROM");
}

void setBytes(Eeprom &eeprom, const Target &target, const std::string &value) {
    const std::vector<uint8_t> bytes = bytesToSet(target, value, eepromSize(eeprom), "EEPROM");
    std::memcpy(eeprom.bytes + target.offset.value_or(0), bytes.data(), bytes.size());
}

std::string getBoardEeprom(const Target &target) {
    return getBytes(target.devices().eeprom, target);
}

void setBoardEeprom(const Target &target, const std::string &value) {
    setBytes(target.devices().eeprom, target, value);
}

std::string getSupplyEeprom(const Target &target) {
    return getBytes(target.supply().eeprom, target);
}

void setSupplyEeprom(const Target &target, const std::string &value) {
    setBytes(target.supply().eeprom, target, value);
}

// The factory's record

/** A field's text, with what is not printable as \xNN. */
std::string getSerial(const Target &target) {
    const uint8_t *serial = factorySerial(target.devices().eeprom);
    std::string text;
    for (uint32_t i = 0; i < kFactorySerialSize && serial[i] != 0; ++i) {
        const bool isPlain = serial[i] >= ' ' && serial[i] <= '~' && serial[i] != '\\';
        text += isPlain ? std::string(1, static_cast<char>(serial[i]))
                        : "\\x" + language::hexText({serial + i, 1});
    }
    return text;
}

void setSerial(const Target &target, const std::string &value) {
    if (const std::string problem = serialProblem(value); !problem.empty())
        throw Refused(problem);
    setFactorySerial(target.devices().eeprom, value.c_str());
}

std::string getMac(const Target &target) {
    return macText({factoryMac(target.devices().eeprom), kFactoryMacSize});
}

void setMac(const Target &target, const std::string &value) {
    const language::Mac bytes = language::parseMac(value);
    uint8_t mac[kFactoryMacSize];
    std::memcpy(mac, bytes.data(), sizeof(mac));
    setFactoryMac(target.devices().eeprom, mac);
}

constexpr PropertyType kProperties[] = {
    {"model", 0, 0, getModel, nullptr, nullptr, false, Fitted::Always},
    {"time", 0, 0, getTime, setTime, nullptr, false, Fitted::Always},
    {"clock", 0, 0, getClock, nullptr, nullptr, false, Fitted::Always},
    {"system-clock", 0, 0, getSystemClock, nullptr, nullptr, false, Fitted::Always},
    {"cmdline", 0, 0, getCommandLine, setCommandLine, nullptr, false, Fitted::Always},
    {"identity.serial", 0, 0, getSerial, setSerial, nullptr, false, Fitted::Always},
    {"identity.mac", 0, 0, getMac, setMac, nullptr, false, Fitted::Always},
    {"cpld.#", 0, kCpldRegisters - 1, getCpld, setCpld, "0x0000", false, Fitted::Always, false,
     noteOfRegister},
    {"cpld.logic", 0, 0, getLogic, nullptr, nullptr, false, Fitted::Always},
    {"gpio.#", 0, kGpioLines - 1, getGpio, setGpio, "0", false, Fitted::Always},
    {"gpio.#.direction", 0, kGpioLines - 1, getDirection, nullptr, "input", false, Fitted::Always},
    {"eeprom.board", 0, 0, getBoardEeprom, setBoardEeprom, nullptr, true, Fitted::Always},
    {"eeprom.supply#", 1, kSupplies, getSupplyEeprom, setSupplyEeprom, nullptr, true,
     Fitted::PlugInSupplies},
};

/** Whether a model has what a property is about. */
bool exists(const PropertyType &type, const Model &model) {
    switch (type.fitted) {
    case Fitted::PlugInSupplies:
        return model.hasSupplyEeproms;
    case Fitted::SupplyLines:
        return model.supplyLines != SupplyLines::None;
    case Fitted::Poe:
        return model.poePorts != 0;
    case Fitted::Fans:
        return model.fans != 0;
    case Fitted::ClockChip:
        return model.hasClock;
    case Fitted::Sfp: // on every model
    case Fitted::Flash:
    case Fitted::Always:
        break;
    }
    return true;
}

const Model &modelOf(const BoardFolder &folder) {
    const Model *model = findModel(folder.board()->header.devId);
    if (model == nullptr)
        throw Refused("the board is of no known model; create it again");
    return *model;
}

/** Why a model does not have what a property is about. */
std::string absenceReason(Fitted fitted) {
    switch (fitted) {
    case Fitted::Poe:
        return "it has no PoE";
    case Fitted::Fans:
        return "it has no fans";
    case Fitted::ClockChip:
        return "it has no clock";
    default:
        return "its supplies are built in";
    }
}

/** The last number of a row on a model. */
uint32_t lastOf(const PropertyType &type, const Model &model) {
    if (type.fitted == Fitted::Fans)
        return model.fans;
    return type.last == kPoePorts && type.fitted == Fitted::Poe ? model.poePorts : type.last;
}

/** "1-24, 33-38". */
std::string cagesText(const Model &model) {
    const uint32_t uplink = firstUplink(model);
    const std::string front =
        model.sfpPorts != 0 ? "1-" + std::to_string(model.sfpPorts) + ", " : "";
    return front + std::to_string(uplink) + "-" + std::to_string(uplink + model.uplinks - 1);
}

/** Whether a row has a property of a number that lies between its first and its last. */
bool isInRow(const PropertyType &type, const Model &model, uint32_t number) {
    if (type.fitted == Fitted::Sfp)
        return isSfpCage(model, number);
    return type.fitted != Fitted::Flash || flashIndex(number) < kFlashPartitions;
}

/** Calls a function with every type of property. */
template <typename Visit>
void forEachType(Visit visit) {
    for (const PropertyType &type : kProperties)
        visit(type);
    for (const PropertyType &type : powerProperties())
        visit(type);
    for (const PropertyType &type : chassisProperties())
        visit(type);
    for (const PropertyType &type : sfpProperties())
        visit(type);
    for (const PropertyType &type : mdioRegisterProperties())
        visit(type);
    for (const PropertyType &type : flashProperties())
        visit(type);
}

void bringUpToDate(const BoardFolder &folder) {
    advanceBoard(*folder.board(), clockNow(folder.board()->clock, hostNow()));
}

std::string nameOf(const PropertyType &type, uint32_t number) {
    std::string name = type.pattern;
    if (const size_t place = name.find('#'); place != std::string::npos)
        name.replace(place, 1, std::to_string(number));
    return name;
}

/** The number in a name of a type; nothing when the name is not of that type. */
std::optional<uint32_t> numberIn(const std::string &name, const PropertyType &type) {
    const std::string pattern = type.pattern;
    const size_t place = pattern.find('#');
    if (place == std::string::npos)
        return name == pattern ? std::optional<uint32_t>(0) : std::nullopt;
    const std::string behind = pattern.substr(place + 1);
    if (name.size() <= place + behind.size() || name.compare(0, place, pattern, 0, place) != 0 ||
        !name.ends_with(behind))
        return std::nullopt;
    return parseNumber(name.substr(place, name.size() - place - behind.size()), UINT32_MAX);
}

std::optional<uint32_t> parseRangePart(const std::string &text) {
    const auto number = parseNumber(text, UINT32_MAX);
    if (!number.has_value())
        throw Refused("'" + text +
                      "' is not a number; a part of an EEPROM or of flash is @OFFSET+LENGTH");
    return number;
}

struct Reference {
    const PropertyType *type;
    Target target;
};

std::string noteOf(const Reference &reference) {
    return reference.type->note != nullptr ? reference.type->note(reference.target) : "";
}

/** What a full name, with its range, stands for. */
Reference resolve(const BoardFolder &folder, const std::string &fullName) {
    const size_t at = fullName.find('@');
    const std::string name = fullName.substr(0, at);
    Reference found = {nullptr, {folder, 0, std::nullopt, std::nullopt}};
    const Model &model = modelOf(folder);
    forEachType([&](const PropertyType &type) {
        const auto number = numberIn(name, type);
        if (!number.has_value())
            return;
        if (type.fitted == Fitted::Flash)
            flashIndexOf(*number);
        if (type.fitted == Fitted::Sfp && !isSfpCage(model, *number))
            throw Refused("there is no " + name + "; the cages are " + cagesText(model));
        const uint32_t last = lastOf(type, model);
        if (exists(type, model) && (*number < type.first || *number > last))
            throw Refused("there is no " + name + "; the numbers are " +
                          std::to_string(type.first) + " to " + std::to_string(last));
        found.type = &type;
        found.target.number = *number;
    });
    if (found.type == nullptr)
        throw Refused("there is no property '" + name + "'; 'vboard get DIR' lists them");
    if (!exists(*found.type, model))
        throw Refused("there is no " + name + " on model " + hex16Text(model.devId) + ": " +
                      absenceReason(found.type->fitted));
    if (at == std::string::npos)
        return found;
    if (!found.type->hasBytes)
        throw Refused(name + " has no parts; leave out '" + fullName.substr(at) + "'");
    const size_t plus = fullName.find('+', at);
    found.target.offset = parseRangePart(fullName.substr(at + 1, plus - at - 1));
    if (plus != std::string::npos)
        found.target.length = parseRangePart(fullName.substr(plus + 1));
    return found;
}

} // namespace

std::vector<uint8_t> bytesToSet(const PropertyTarget &target, const std::string &value,
                                uint32_t size, const std::string &what) {
    const uint32_t offset = target.offset.value_or(0);
    if (target.length.has_value())
        throw Refused("the bytes tell how many are set; leave out '+LENGTH'");
    const std::vector<uint8_t> bytes = language::parseBytes(value);
    if (offset >= size || bytes.size() > size - offset)
        throw Refused("the " + what + " has bytes 0 to " + std::to_string(size - 1) + "; " +
                      std::to_string(bytes.size()) + " bytes from " + std::to_string(offset) +
                      " on would end behind them");
    return bytes;
}

std::string bytesText(const PropertyTarget &target, const uint8_t *bytes, uint32_t size,
                      const std::string &what) {
    const uint32_t offset = target.offset.value_or(0);
    const uint32_t length = target.length.value_or(offset < size ? size - offset : 1);
    if (length == 0 || offset >= size || length > size - offset)
        throw Refused("the " + what + " has bytes 0 to " + std::to_string(size - 1) +
                      "; give a range inside: @OFFSET+LENGTH");
    return language::hexText({bytes + offset, length});
}

std::vector<Property> properties(const BoardFolder &folder) {
    const Model &model = modelOf(folder);
    bringUpToDate(folder);
    std::vector<Property> all;
    forEachType([&](const PropertyType &type) {
        if (!exists(type, model) || type.isLong)
            return;
        for (uint32_t number = type.first; number <= lastOf(type, model); ++number) {
            if (!isInRow(type, model, number))
                continue;
            const Target target = {folder, number, std::nullopt, std::nullopt};
            const std::string value = type.get(target);
            const bool isIdle = type.idle != nullptr && value == type.idle;
            all.push_back({nameOf(type, number), value, isIdle, noteOf({&type, target})});
        }
    });
    return all;
}

std::string property(const BoardFolder &folder, const std::string &name) {
    const Reference found = resolve(folder, name);
    bringUpToDate(folder);
    return found.type->get(found.target);
}

std::string propertyNote(const BoardFolder &folder, const std::string &name) {
    return noteOf(resolve(folder, name));
}

void setProperty(const BoardFolder &folder, const std::string &name, const std::string &value) {
    const Reference found = resolve(folder, name);
    if (found.type->set == nullptr)
        throw Refused(name + " can only be read");
    bringUpToDate(folder);
    language::about(name, [&] { found.type->set(found.target, value); });
    bringUpToDate(folder);
}

} // namespace vb
