// Properties of what has to do with power: supplies, PoE, watchdog and reset.

#include "virtual_board/board/circuits.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/poe_text.h"
#include "virtual_board/words/property_types.h"
#include "virtual_board/words/values.h"

#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace vb {

namespace {

using Target = PropertyTarget;

constexpr const char *kPresences[] = {"no", "yes"};
constexpr const char *kConditions[] = {"good", "failed"};

// Supplies

std::string getPresent(const Target &target) {
    return kPresences[target.supply().isPresent];
}

void setPresent(const Target &target, const std::string &value) {
    target.supply().isPresent = language::parseChoice(value, kPresences);
    driveSupplyLines(target.board(), target.number - 1);
}

template <uint32_t PmbusSupply::*flag>
std::string getFailed(const Target &target) {
    return kConditions[target.supply().pmbus.*flag];
}

template <uint32_t PmbusSupply::*flag>
void setFailed(const Target &target, const std::string &value) {
    target.supply().pmbus.*flag = language::parseChoice(value, kConditions);
    driveSupplyLines(target.board(), target.number - 1);
}

template <uint32_t PmbusSupply::*field>
std::string getAmount(const Target &target) {
    return std::to_string(target.supply().pmbus.*field);
}

template <uint32_t PmbusSupply::*field, uint32_t max>
void setAmount(const Target &target, const std::string &value) {
    target.supply().pmbus.*field = language::parseNumber<uint32_t>(value, 0, max);
}

template <uint32_t index>
std::string getDegrees(const Target &target) {
    return std::to_string(target.supply().pmbus.degrees[index]);
}

template <uint32_t index>
void setDegrees(const Target &target, const std::string &value) {
    target.supply().pmbus.degrees[index] =
        language::parseNumber(value, -kPmbusMostDegrees, kPmbusMostDegrees);
}

// Single lines of a supply

template <CpldLine (*lineOf)(uint32_t)>
std::string getLine(const Target &target) {
    return cpldLevel(target.devices().cpld, lineOf(target.number)) ? "1" : "0";
}

template <CpldLine (*lineOf)(uint32_t)>
void setLine(const Target &target, const std::string &value) {
    const bool level = language::parseNumber(value, 0, 1) != 0;
    cpldDrive(target.devices().cpld, lineOf(target.number), level);
}

template <uint32_t line>
constexpr CpldLine statusLine(uint32_t n) {
    return supplyStatusLine(n, line);
}

// PoE

PoeController &poeOf(const Target &target) {
    return target.devices().poe;
}

std::string getDevice(const Target &target) {
    return deviceText(poeOf(target).device[target.number - 1]);
}

void setDevice(const Target &target, const std::string &value) {
    poeSetDevice(poeOf(target), target.number - 1, parseDevice(value), target.now());
}

std::string getState(const Target &target) {
    return phaseText(poeOf(target).port[target.number - 1].phase);
}

std::string getController(const Target &target) {
    constexpr const char *kModes[] = {"reset", "application", "loader"};
    return isPoePresent(target.board()) ? kModes[static_cast<size_t>(poeOf(target).mode)]
                                        : "missing";
}

void setController(const Target &target, const std::string &value) {
    constexpr const char *kPresence[] = {"present", "missing"};
    poeOf(target).isMissing = language::parseChoice(value, kPresence) != 0 ? 1 : 0;
    drivePoeLine(target.board());
}

// Watchdog and reset

std::string getWatchdog(const Target &target) {
    const uint64_t expiry =
        watchdogExpiry(target.devices().watchdog, target.devices().cpld.reg[kCpldWatchdog]);
    return expiry == UINT64_MAX ? "off" : secondsText(expiry - target.now());
}

std::string getResets(const Target &target) {
    return std::to_string(target.devices().resets);
}

std::string getReason(const Target &target) {
    constexpr const char *kReasons[] = {"none", "power-on", "register", "watchdog"};
    return kReasons[static_cast<size_t>(target.devices().lastReset)];
}

std::string getPower(const Target &) {
    return "on";
}

/** Empties a folder but for one in it. Positions in folders have 64 bits everywhere. */
void emptyFolder(const std::string &path, const std::string &kept) {
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(opendir(path.c_str()), closedir);
    if (folder == nullptr)
        return;
    while (const dirent64 *entry = readdir64(folder.get())) {
        const std::string name = entry->d_name;
        std::string file = path;
        file.append("/").append(name);
        const bool isFolder = name != "." && name != ".." && unlink(file.c_str()) != 0;
        if (isFolder) {
            emptyFolder(file, kept);
            if (file != kept)
                rmdir(file.c_str());
        }
    }
}

/** What is in main memory does not outlive the power: the files in /tmp and the system clock. */
void setPower(const Target &target, const std::string &value) {
    if (value != "cycle")
        throw Refused("power can be set to 'cycle': off and on again");
    const std::string shared = target.folder.hostPath(kSharedFolderPath).text;
    emptyFolder(shared.substr(0, shared.rfind('/')), shared); // programs may be in it
    if (mkdir(shared.c_str(), 0755) == 0) {
        chmod(shared.c_str(), 0755); // whatever the umask is
        target.folder.giveToOwner(shared.c_str());
    }
    target.board().clock.systemOffsetNs = 0;
    resetBoard(target.board(), ResetReason::PowerOn, target.now());
}

std::string getPulses(const Target &target) {
    return std::to_string(target.devices().ptpPulses);
}

using P = PmbusSupply;

/** A row of numbers of one supply. */
template <uint32_t P::*field, uint32_t max>
constexpr PropertyType amount(const char *pattern) {
    return {pattern,
            1,
            kSupplies,
            getAmount<field>,
            setAmount<field, max>,
            nullptr,
            false,
            Fitted::PlugInSupplies};
}

template <uint32_t P::*flag>
constexpr PropertyType failure(const char *pattern) {
    return {pattern,         1,      kSupplies, getFailed<flag>,
            setFailed<flag>, "good", false,     Fitted::SupplyLines};
}

template <uint32_t index>
constexpr PropertyType temperature(const char *pattern) {
    return {pattern,           1,       kSupplies, getDegrees<index>,
            setDegrees<index>, nullptr, false,     Fitted::PlugInSupplies};
}

template <CpldLine (*lineOf)(uint32_t)>
constexpr PropertyType line(const char *pattern, PropertyGetter note = nullptr) {
    return {pattern, 1,     kSupplies,           getLine<lineOf>, setLine<lineOf>,
            nullptr, false, Fitted::SupplyLines, false,           note};
}

constexpr PropertyType kPowerProperties[] = {
    {"supply.#.present", 1, kSupplies, getPresent, setPresent, nullptr, false, Fitted::SupplyLines,
     false, noteOfSupplyPresence},
    failure<&P::hasInputFailed>("supply.#.input"),
    failure<&P::hasOutputFailed>("supply.#.output"),
    amount<&P::inputMv, kPmbusMost>("supply.#.input-voltage"),
    amount<&P::inputMa, kPmbusMost>("supply.#.input-current"),
    amount<&P::inputMw, kPmbusMost>("supply.#.input-power"),
    amount<&P::outputMv, kPmbusMostOutputMv>("supply.#.output-voltage"),
    amount<&P::outputMa, kPmbusMost>("supply.#.output-current"),
    amount<&P::outputMw, kPmbusMost>("supply.#.output-power"),
    temperature<0>("supply.#.temperature1"),
    temperature<1>("supply.#.temperature2"),
    temperature<2>("supply.#.temperature3"),
    {"supply.#.busy-every", 1, kSupplies, getAmount<&P::busyEvery>,
     setAmount<&P::busyEvery, UINT32_MAX>, "0", false, Fitted::PlugInSupplies},
    line<supplyPresenceLine>("supply.#.line.presence", noteOfSupplyPresence),
    line<supplyTypeLine>("supply.#.line.type"),
    line<statusLine<0>>("supply.#.line.status0"),
    line<statusLine<1>>("supply.#.line.status1"),
    line<statusLine<2>>("supply.#.line.status2"),
    {"poe.controller", 0, 0, getController, setController, nullptr, false, Fitted::Poe},
    {"poe.#.device", 1, kPoePorts, getDevice, setDevice, "none", false, Fitted::Poe},
    {"poe.#.state", 1, kPoePorts, getState, nullptr, "disabled", false, Fitted::Poe},
    {"watchdog.expires", 0, 0, getWatchdog, nullptr, "off", false, Fitted::Always},
    {"reset.count", 0, 0, getResets, nullptr, "0", false, Fitted::Always},
    {"reset.reason", 0, 0, getReason, nullptr, "none", false, Fitted::Always},
    {"power", 0, 0, getPower, setPower, "on", false, Fitted::Always},
    {"ptp.pulses", 0, 0, getPulses, nullptr, "0", false, Fitted::Always},
};

} // namespace

std::span<const PropertyType> powerProperties() {
    return kPowerProperties;
}

} // namespace vb
