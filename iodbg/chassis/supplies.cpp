#include "iodbg/chassis/supplies.h"

#include "bsp.h"
#include "iodbg/core/format.h"

#include <vector>

namespace iodbg {

namespace {

/** A reading, in the library's unit for programs. */
struct Reading {
    const char *key;
    const char *label;
    const char *unit; // that people read it in
    bool isInThousandths;
    bool isMain;
    int32_t BspPowerInfo::*field;
};

constexpr Reading kReadings[] = {
    {"input_voltage_mv", "Input voltage", "V", true, false, &BspPowerInfo::inputVoltage},
    {"input_current_ma", "Input current", "A", true, false, &BspPowerInfo::inputCurrent},
    {"input_power_mw", "Input power", "W", true, false, &BspPowerInfo::inputPower},
    {"output_voltage_mv", "Output voltage", "V", true, true, &BspPowerInfo::outputVoltage},
    {"output_current_ma", "Output current", "A", true, false, &BspPowerInfo::outputCurrent},
    {"output_power_mw", "Output power", "W", true, true, &BspPowerInfo::outputPower},
    {"temperature1_c", "Temperature 1", "C", false, true, &BspPowerInfo::temperature1},
    {"temperature2_c", "Temperature 2", "C", false, false, &BspPowerInfo::temperature2},
    {"temperature3_c", "Temperature 3", "C", false, false, &BspPowerInfo::temperature3},
};

/** A supply's place in an answer. */
struct Place {
    Report &report;
    Section &section;
    const Model &model;
    int32_t supply;

    void add(const std::string &key, const std::string &label, int32_t status,
             const Cell &cell) const {
        section.add(key, label, report.tried(section.path(key), status, cell));
    }
};

/** False when the supply is known not to be plugged. */
bool addPresence(const Place &place) {
    if (place.supply > BSP_FIXED_SUPPLIES) {
        place.section.add("plugged", "Plugged", {"unknown: it has no presence line", nullptr});
        return true;
    }
    bool isPlugged = false;
    const int32_t status = readPlugged(place.model, place.supply, isPlugged);
    place.add("plugged", "Plugged", status,
              flagCell(isPlugged, "yes", "no: it is not asked further"));
    if (status == BSP_OK)
        place.section.add("presence_line", "Presence line",
                          {isPlugged ? "0 (active low)" : "1 (active low)", int64_t{!isPlugged}});
    return status != BSP_OK || isPlugged;
}

void addStatus(const Place &place) {
    if (!place.model.hasSupplyLines) {
        place.section.add("status", "Status", {"none: not with this model", nullptr});
        return;
    }
    int32_t code = 0;
    const int32_t status = ioPowerStatusGet(place.supply, &code);
    place.add("status", "Status", status, numberCell(code));
}

/** False when the type cannot be had: then the readings cannot either. */
bool addType(const Place &place) {
    int32_t type = 0;
    const int32_t status = bspPowerTypeGet(place.supply, &type);
    place.add("type", "Type", status, numberCell(type));
    return status == BSP_OK;
}

Cell cellOf(const Reading &reading, int32_t value) {
    if (reading.isInThousandths)
        return {thousandths(value) + " " + reading.unit, int64_t{value}};
    return {std::to_string(value) + " " + reading.unit, int64_t{value}};
}

void addReadings(const Place &place, Readings readings) {
    constexpr char kKey[] = "has_readings";
    constexpr char kLabel[] = "Readings";
    if (!place.model.hasSupplyReadings) {
        place.section.add(kKey, kLabel, flagCell(false, "", "none: not with this model"));
        return;
    }
    BspPowerInfo info;
    const int32_t status = ioPowerInfoGet(place.supply, &info);
    place.add(kKey, kLabel, status, flagCell(true, "taken over PMBus", ""));
    if (status != BSP_OK)
        return;
    for (const Reading &reading : kReadings) {
        if (reading.isMain || readings == Readings::All)
            place.section.add(reading.key, reading.label, cellOf(reading, info.*reading.field));
    }
}

/** A supply's presence and status; the other fields do not fit into a table. */
std::vector<Cell> supplyRow(Report &report, const Model &model, int32_t supply) {
    Section section = {"supply" + std::to_string(supply), "", {}};
    const Place place = {report, section, model, supply};
    addPresence(place);
    Cell plugged = section.fields.front().cell;
    if (plugged.value == Value{false})
        plugged.text = "no";
    addStatus(place);
    return {numberCell(supply), plugged, section.fields.back().cell};
}

} // namespace

int32_t readPlugged(const Model &model, int32_t supply, bool &isPlugged) {
    int32_t answer = 0;
    const int32_t status = ioPowerPresentGet(supply, &answer);
    isPlugged = answer == (model.hasSupplyLines ? BSP_SUPPLY_LINE_LOW : BSP_SUPPLY_PRESENT);
    return status;
}

Table supplyTable(Report &report, const Model &model) {
    Table table = {
        "supplies", {{"supply", "SUPPLY"}, {"plugged", "PLUGGED"}, {"status", "STATUS"}}, {}};
    for (int32_t supply = 1; supply <= BSP_FIXED_SUPPLIES; ++supply)
        table.rows.push_back(supplyRow(report, model, supply));
    return table;
}

bool addSupply(Report &report, Section &section, const Model &model, uint32_t supply,
               Readings readings) {
    const Place place = {report, section, model, static_cast<int32_t>(supply)};
    const bool mayBePlugged = addPresence(place);
    addStatus(place);
    if (mayBePlugged && addType(place))
        addReadings(place, readings);
    return mayBePlugged;
}

} // namespace iodbg
