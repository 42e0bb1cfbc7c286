#include "iodbg/poe_controller.h"

#include "bsp.h"
#include "iodbg/poe_port.h"

#include <array>

namespace iodbg {

namespace {

constexpr int32_t kFirstSupply = 1;

struct Item {
    const char *key;
    const char *label;
    int32_t (*read)(Cell &cell);
};

int32_t readVersion(Cell &cell) {
    std::array<char, 16> text{};
    const int32_t status = ioPoeAppVersionGet(text.data());
    cell = textCell(text.data());
    return status;
}

int32_t readAppStatus(Cell &cell) {
    uint32_t value = 0;
    const int32_t status = ioPoeAppStatusGet(&value);
    cell = poeAppStatusCell(value);
    return status;
}

/** A controller that does not answer leaves the value as it was, without a failure. */
int32_t readInitialised(Cell &cell) {
    constexpr uint32_t kNoAnswer = 2;
    uint32_t value = kNoAnswer;
    const int32_t status = ioPoeInitStatusGet(&value);
    cell = value == kNoAnswer ? Cell{"no answer", nullptr} : flagCell(value == 1, "yes", "no");
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

constexpr Item kItems[] = {
    {"application_status", "Firmware", readAppStatus},
    {"application_version", "Firmware version", readVersion},
    {"initialised", "Initialised", readInitialised},
    {"budget_mw", "Power budget, W", readPower<ioPoeGlobalMaxPowerGet>},
    {"drawn_mw", "Power drawn, W", readPower<ioPoeGlobalPowerGet>},
    {"rated_per_supply_mw", "Rated for each supply, W", readRated},
};

void addItems(Report &report, Section &section) {
    for (const Item &item : kItems) {
        Cell cell;
        const int32_t status = item.read(cell);
        section.add(item.key, item.label, report.tried(section.key + "." + item.key, status, cell));
    }
}

} // namespace

Cell poeAppStatusCell(uint32_t status) {
    constexpr const char *kWords[] = {"usable", "upgrade started, not finished",
                                      "upgrade failed: run 'iodbg poe upgrade'"};
    return {status < 3 ? kWords[status] : "unknown", int64_t{status}};
}

void addPoeController(Report &report) {
    Section section = {"poe", "PoE", {}};
    uint32_t isMissing = 0;
    const int32_t status = bspPoeOnlineGet(&isMissing);
    section.add("controller_present", "Controller",
                report.tried("poe.controller_present", status,
                             flagCell(isMissing == 0, "present", "missing")));
    if (status == BSP_OK && isMissing == 0)
        addItems(report, section);
    report.parts.emplace_back(section);
}

} // namespace iodbg
