#include "virtual_board/board/consistency.h"

#include "virtual_board/board/clock_change.h"

#include <algorithm>
#include <iterator>

namespace vb {

namespace {

/** Whether a device is there where the model has it, and only there. */
bool isFittedAs(bool hasIt, uint32_t isFitted) {
    return isFitted == (hasIt ? 1u : 0u);
}

bool suppliesAreConsistent(const Devices &devices, const Model &model) {
    return std::all_of(std::begin(devices.supply), std::end(devices.supply),
                       [&](const Supply &supply) {
                           return supply.isPresent <= 1 &&
                                  supply.eeprom.blocks == (model.supplies.haveBus ? 1u : 0u) &&
                                  pmbusIsConsistent(supply.pmbus);
                       });
}

struct Check {
    const char *part;
    bool (*holds)(const Devices &devices, const Model &model);
};

constexpr Check kChecks[] = {
    {"the lines",
     [](const Devices &devices, const Model &) { return gpioIsConsistent(devices.gpio); }},
    {"the EEPROM", [](const Devices &devices,
                      const Model &) { return devices.eeprom.blocks == kEepromMaxBlocks; }},
    {"the supplies", suppliesAreConsistent},
    {"the watchdog",
     [](const Devices &devices, const Model &) { return watchdogIsConsistent(devices.watchdog); }},
    {"the last reset", [](const Devices &devices,
                          const Model &) { return devices.lastReset <= ResetReason::Watchdog; }},
    {"the PoE controller",
     [](const Devices &devices, const Model &model) {
         return isFittedAs(model.poePorts != 0, devices.poe.isFitted) &&
                devices.poe.chip == (model.poePorts != 0 ? model.poeChip : PoeChip{}) &&
                poeIsConsistent(devices.poe);
     }},
    {"the console",
     [](const Devices &devices, const Model &) { return isConsoleSpeed(devices.console.speed); }},
    {"the flash",
     [](const Devices &devices, const Model &) {
         return devices.flashTiming <= FlashTiming::Usual &&
                std::all_of(std::begin(devices.flash), std::end(devices.flash), flashIsConsistent);
     }},
    {"the fans and the temperature",
     [](const Devices &devices, const Model &model) {
         return devices.climate.fans == model.fans.count && climateIsConsistent(devices.climate);
     }},
    {"the calendar clock",
     [](const Devices &devices, const Model &model) {
         return isFittedAs(model.hasClock, devices.clockChip.isFitted) &&
                clockIsConsistent(devices.clockChip);
     }},
    {"the SFP modules",
     [](const Devices &devices, const Model &) {
         return std::all_of(std::begin(devices.sfp), std::end(devices.sfp), sfpIsConsistent);
     }},
    {"MDIO", [](const Devices &devices, const Model &) { return mdioIsConsistent(devices.mdio); }},
};

} // namespace

const char *damagedPart(const Board &board, uint64_t hostNs) {
    const Model *model = findModel(board.header.devId);
    if (model == nullptr)
        return "the model";
    if (!clockIsConsistent(board.clock, hostNs))
        return "the clock";
    if (!faultsAreConsistent(board.faults))
        return "the fault rules";
    const auto *failed =
        std::find_if(std::begin(kChecks), std::end(kChecks),
                     [&](const Check &check) { return !check.holds(board.devices, *model); });
    return failed == std::end(kChecks) ? nullptr : failed->part;
}

void mendBoard(Board &board, const HostTime &host) {
    mendClock(board.clock, host);
    mendFaults(board.faults);
}

} // namespace vb
