#include "iodbg/poe/controller.h"

#include "bsp.h"
#include "iodbg/core/items.h"
#include "iodbg/poe/cells.h"

#include <iterator>

namespace iodbg {

namespace {

constexpr int32_t kFirstSupply = 1;

/** What the last firmware upgrade left. */
Cell appStatusCell(uint32_t status) {
    constexpr const char *kWords[] = {"usable", "upgrade started, not initialised since",
                                      "upgrade failed: run 'iodbg poe upgrade'"};
    return {status < std::size(kWords) ? kWords[status] : "unknown", int64_t{status}};
}

int32_t readAppStatus(Cell &cell) {
    uint32_t value = 0;
    const int32_t status = ioPoeAppStatusGet(&value);
    cell = appStatusCell(value);
    return status;
}

/** A controller that does not answer leaves the value as it was, without a failure. */
int32_t readInitialised(Cell &cell) {
    constexpr uint32_t kNoAnswer = 2;
    uint32_t value = kNoAnswer;
    const int32_t status = ioPoeInitStatusGet(&value);
    cell = value == kNoAnswer ? Cell{"no answer", nullptr}
                              : flagCell(value == BSP_POE_INITIALISED, "yes", "no");
    return status;
}

template <int32_t (*Get)(uint32_t *)>
int32_t readPower(Cell &cell) {
    uint32_t milliwatts = 0;
    const int32_t status = Get(&milliwatts);
    cell = milliCell(milliwatts);
    return status;
}

int32_t readRated(Cell &cell) {
    uint32_t milliwatts = 0;
    const int32_t status = ioPoeGlobalRatedPowerGet(kFirstSupply, &milliwatts);
    cell = milliCell(milliwatts);
    return status;
}

constexpr Item kStateItems[] = {
    {"application_status", "Firmware", readAppStatus},
    {"application_version", "Firmware version", readText<ioPoeAppVersionGet>},
    {"initialised", "Initialised", readInitialised},
};
constexpr Item kPowerItems[] = {
    {"budget_mw", "Power budget, W", readPower<ioPoeGlobalMaxPowerGet>},
    {"drawn_mw", "Power drawn, W", readPower<ioPoeGlobalPowerGet>},
};
constexpr Item kRatedItem[] = {
    {"rated_per_supply_mw", "Rated for each supply, W", readRated},
};

} // namespace

const std::span<const Item> kPoePowerItems = kPowerItems;

void addPoeController(Report &report) {
    Section section = {"poe", "PoE", {}};
    if (addPoePresence(report, section)) {
        for (const std::span<const Item> items :
             {std::span<const Item>(kStateItems), kPoePowerItems, {kRatedItem}})
            addItems(report, section, items);
    }
    report.parts.emplace_back(section);
}

bool addPoePresence(Report &report, Section &section) {
    constexpr char kKey[] = "controller_present";
    uint32_t presence = BSP_POE_CONTROLLER_PRESENT;
    const int32_t status = bspPoeOnlineGet(&presence);
    const bool isPresent = presence == BSP_POE_CONTROLLER_PRESENT;
    section.add(
        kKey, "Controller",
        report.tried(section.path(kKey), status, flagCell(isPresent, "present", "missing")));
    return status == BSP_OK && isPresent;
}

} // namespace iodbg
