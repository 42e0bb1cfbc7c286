// Registers, lines and EEPROMs of a twin.

#include "virtual_board/board/circuits.h"
#include "virtual_board/twin/parts.h"

#include <algorithm>

namespace vb {

namespace {

void makeMemory(Twin &twin, const std::string &name, Eeprom &eeprom) {
    const language::Bytes bytes = twin.bytes(name, 0);
    if (bytes.size() > eepromSize(eeprom))
        twin.lack(name, "it is larger than this board's");
    else
        std::copy(bytes.begin(), bytes.end(), eeprom.bytes);
}

/** Speeds may change while a unit is captured: those that are told by name count. */
bool isMadeByFans(const Twin &twin, uint32_t reg) {
    return twin.model.fans.count != 0 && (reg == kCpldFanSpeeds || reg == kCpldFanSpeeds + 1);
}

} // namespace

void makeTwinRegisters(Twin &twin) {
    for (uint32_t reg = 0; reg < kCpldRegisters; ++reg) {
        const auto content = twin.number("cpld.#", reg, 0, UINT16_MAX);
        if (content && !isMadeByFans(twin, reg))
            twin.devices().cpld.reg[reg] = static_cast<uint16_t>(*content);
    }
    if (watchdogPeriod(twin.devices().cpld.reg[kCpldWatchdog]) == 0)
        return;
    // Whoever fed it is not on the board. It waits for somebody who does.
    constexpr uint64_t kNeverNs = INT64_MAX;
    twin.devices().watchdog.fedNs = kNeverNs;
}

void makeTwinLines(Twin &twin) {
    for (uint32_t line = 0; line < kGpioLines; ++line) {
        if (const auto level = twin.number("gpio.#", line, 0, 1))
            twin.devices().gpio.external[line] = static_cast<uint8_t>(*level);
    }
    advanceBoard(twin.board(), 0);
}

void makeTwinMemories(Twin &twin) {
    makeMemory(twin, "eeprom.board", twin.devices().eeprom);
    for (uint32_t index = 0; index < kSupplies; ++index)
        makeMemory(twin, twinName("eeprom.supply#", index + 1),
                   twin.devices().supply[index].eeprom);
}

} // namespace vb
