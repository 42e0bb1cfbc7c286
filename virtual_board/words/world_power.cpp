// Properties of what has to do with power: supplies, PoE, watchdog and reset.

#include "virtual_board/board/circuits.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/poe_text.h"
#include "virtual_board/words/values.h"

#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

// Supplies

Value getPresent(const Target &target) {
    return target.supply().isPresent != 0;
}

void setPresent(const Target &target, const Value &value) {
    target.supply().isPresent = value.as<uint32_t>();
    driveSupplyLines(target.board(), target.number() - 1);
}

template <uint32_t PmbusSupply::*flag>
Value getFailed(const Target &target) {
    return target.supply().pmbus.*flag != 0;
}

template <uint32_t PmbusSupply::*flag>
void setFailed(const Target &target, const Value &value) {
    target.supply().pmbus.*flag = value.as<uint32_t>();
    driveSupplyLines(target.board(), target.number() - 1);
}

template <uint32_t PmbusSupply::*field>
Value getAmount(const Target &target) {
    return target.supply().pmbus.*field;
}

template <uint32_t PmbusSupply::*field>
void setAmount(const Target &target, const Value &value) {
    target.supply().pmbus.*field = value.as<uint32_t>();
}

template <uint32_t index>
Value getDegrees(const Target &target) {
    return target.supply().pmbus.degrees[index];
}

template <uint32_t index>
void setDegrees(const Target &target, const Value &value) {
    target.supply().pmbus.degrees[index] = value.as<int32_t>();
}

// Single lines of a supply

template <CpldLine (*lineOf)(uint32_t)>
Value getLine(const Target &target) {
    return cpldLevel(target.devices().cpld, lineOf(target.number()));
}

template <CpldLine (*lineOf)(uint32_t)>
void setLine(const Target &target, const Value &value) {
    cpldDrive(target.devices().cpld, lineOf(target.number()), value.as<uint32_t>() != 0);
}

template <uint32_t line>
constexpr CpldLine statusLine(uint32_t n) {
    return supplyStatusLine(n, line);
}

// PoE

PoeController &poeOf(const Target &target) {
    return target.devices().poe;
}

Value getDevice(const Target &target) {
    return deviceText(poeOf(target).device[target.number() - 1]);
}

void setDevice(const Target &target, const Value &value) {
    poeSetDevice(poeOf(target), target.number() - 1, parseDevice(value.text()), target.now());
}

Value getState(const Target &target) {
    return static_cast<uint32_t>(poeOf(target).port[target.number() - 1].phase);
}

Value getController(const Target &target) {
    return isPoePresent(target.board())
               ? language::wordOf(language::propertyOf("poe.controller"),
                                  static_cast<uint32_t>(poeOf(target).mode))
               : "missing";
}

void setController(const Target &target, const Value &value) {
    poeOf(target).isMissing = value.as<uint8_t>();
    drivePoeLine(target.board());
}

// Watchdog and reset

Value getWatchdog(const Target &target) {
    const uint64_t expiry =
        watchdogExpiry(target.devices().watchdog, target.devices().cpld.reg[kCpldWatchdog]);
    return expiry == UINT64_MAX ? "off" : secondsText(expiry - target.now());
}

Value getResets(const Target &target) {
    return target.devices().resets;
}

Value getReason(const Target &target) {
    return static_cast<uint32_t>(target.devices().lastReset);
}

Value getPower(const Target &) {
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

/** What is in main memory does not outlive the power. */
void emptyMemory(const BoardFolder &board) {
    const std::string shared = board.hostPath(kSharedFolderPath).text;
    emptyFolder(shared.substr(0, shared.rfind('/')), shared); // programs may be in it
    if (mkdir(shared.c_str(), 0755) == 0) {
        chmod(shared.c_str(), 0755); // whatever the umask is
        board.giveToOwner(shared.c_str());
    }
}

/** The files in /tmp and the system clock are in main memory. */
void setPower(const Target &target, const Value &) {
    const BoardFolder &folder = target.folder;
    target.deeds->push_back({[&folder] { emptyMemory(folder); }, {}});
    target.board().clock.systemOffsetNs = 0;
    resetBoard(target.board(), ResetReason::PowerOn, target.now());
}

Value getPulses(const Target &target) {
    return target.devices().ptpPulses;
}

using P = PmbusSupply;

template <uint32_t P::*field>
constexpr Binding amount(const char *name) {
    return bind(name, getAmount<field>, setAmount<field>);
}

template <uint32_t P::*flag>
constexpr Binding failure(const char *name) {
    return bind(name, getFailed<flag>, setFailed<flag>);
}

template <uint32_t index>
constexpr Binding temperature(const char *name) {
    return bind(name, getDegrees<index>, setDegrees<index>);
}

template <CpldLine (*lineOf)(uint32_t)>
constexpr Binding line(const char *name, PropertyNote note = nullptr) {
    return bind(name, getLine<lineOf>, setLine<lineOf>, note);
}

constexpr Binding kPowerBindings[] = {
    bind("supply.#.present", getPresent, setPresent, noteOfSupplyPresence),
    failure<&P::hasInputFailed>("supply.#.input"),
    failure<&P::hasOutputFailed>("supply.#.output"),
    amount<&P::inputMv>("supply.#.input-voltage"),
    amount<&P::inputMa>("supply.#.input-current"),
    amount<&P::inputMw>("supply.#.input-power"),
    amount<&P::outputMv>("supply.#.output-voltage"),
    amount<&P::outputMa>("supply.#.output-current"),
    amount<&P::outputMw>("supply.#.output-power"),
    temperature<0>("supply.#.temperature1"),
    temperature<1>("supply.#.temperature2"),
    temperature<2>("supply.#.temperature3"),
    amount<&P::busyEvery>("supply.#.busy-every"),
    line<supplyPresenceLine>("supply.#.line.presence", noteOfSupplyPresence),
    line<supplyTypeLine>("supply.#.line.type"),
    line<statusLine<0>>("supply.#.line.status0"),
    line<statusLine<1>>("supply.#.line.status1"),
    line<statusLine<2>>("supply.#.line.status2"),
    bind("poe.controller", getController, setController),
    bind("poe.#.device", getDevice, setDevice),
    bind("poe.#.state", getState),
    bind("watchdog.expires", getWatchdog),
    bind("reset.count", getResets),
    bind("reset.reason", getReason),
    bind("power", getPower, setPower),
    bind("ptp.pulses", getPulses),
};
static_assert(hasWordsUpTo("poe.#.state", PoePhase::Fault));
static_assert(hasWordsUpTo("reset.reason", ResetReason::Watchdog));
static_assert(language::kMostPmbus == kPmbusMost && language::kMostDegrees == kPmbusMostDegrees);
static_assert(language::propertyOf("supply.#.output-voltage").highest == kPmbusMostOutputMv);

} // namespace

std::span<const Binding> powerBindings() {
    return kPowerBindings;
}

} // namespace vb
