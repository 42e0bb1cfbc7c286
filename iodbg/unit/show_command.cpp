// iodbg show: the board at a glance. What cannot be read does not hide the rest.

#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/clocks.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/identity/items.h"
#include "iodbg/identity/record.h"
#include "iodbg/poe/controller.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/unit/commands.h"

namespace iodbg {

namespace {

void addBoard(Report &report) {
    Section section = {"board", "Board", {}};
    for (const auto &items : {kVersionItems, kSerialItems, kMacItems})
        addItems(report, section, items);
    report.parts.emplace_back(section);
}

void addRecord(Report &report) {
    Section section = {"record", "Product record", {}};
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status == BSP_OK)
        addVerdict(section, judge(record));
    else
        section.add("magic_ok", "Record", report.tried(section.key, status, {}));
    report.parts.emplace_back(section);
}

void addSupplyRecord(Report &report, Section &section, const Carrier &supply) {
    BspDevinfo record;
    const int32_t status = readRecord(supply, record);
    const bool hasNone = status == BSP_E_NOT_SUPPORTED;
    if (hasNone)
        section.add("has_record", "Record", flagCell(false, "", "none: not with this model"));
    else
        section.add("has_record", "Record",
                    report.tried(section.key, status, flagCell(true, "readable", "")));
    if (status == BSP_OK)
        addFields(section, supply, record);
}

/** status: of reading the model. */
void addSupplies(Report &report, const Model &model, int32_t status) {
    for (const uint32_t number : {1u, 2u}) {
        const Carrier supply = {number};
        Section section = {supply.word(), "Supply " + std::to_string(number), {}};
        bool mayBePlugged = true;
        if (status == BSP_OK)
            mayBePlugged = addSupply(report, section, model, number, Readings::Main);
        else
            section.add("plugged", "Plugged", report.tried(section.path("plugged"), status, {}));
        if (mayBePlugged)
            addSupplyRecord(report, section, supply);
        else
            section.add("has_record", "Record", {"not read", nullptr});
        report.parts.emplace_back(section);
    }
}

/** Temperature and fans. */
void addClimate(Report &report, const Model &model) {
    Section section = {"climate", "Climate", {}};
    addItems(report, section, kClimateItems);
    report.parts.emplace_back(section);
    report.parts.emplace_back(fanTable(report, model));
}

/** The cages, and the modules in them: a line for each module. */
void addCages(Report &report, const Model &model) {
    Section section = {"sfp", "SFP cages", {}};
    section.add("ports", "Ports", portsCell(model.cages));
    CageSummary summary;
    const int32_t status = readCages(model, summary);
    section.add("plugged", "Modules in",
                report.tried(section.path("plugged"), status, portsCell(summary.plugged)));
    report.parts.emplace_back(section);
    Table cages = cageTable(report, model, summary.plugged);
    cages.tooWide = TooWide::MoveColumns;
    report.parts.emplace_back(cages);
}

/** On models with PoE; a controller that is not there is said, not asked. */
void addPoe(Report &report, const Model &model) {
    if (model.poePorts > 0)
        addPoeController(report);
}

/** status: of reading the model. One that cannot be read has no clock, PoE or cages. */
void addModelsParts(Report &report, const Model &model, int32_t status) {
    addClimate(report, model);
    if (model.hasClock)
        addClocks(report);
    addSupplies(report, model, status);
    addPoe(report, model);
    if (!model.cages.empty())
        addCages(report, model);
}

} // namespace

void addShowCommand(Command &root) {
    takesCapturedUnit(
        root.command(
            "show", "Show the board: versions, identity, product record, temperature, fans, clock, "
                    "supplies, PoE, SFP cages"))
        .onlyAfter(requireKernelModule)
        .detail("What cannot be read does not hide the rest.")
        .example("iodbg show")
        .example("iodbg show --json")
        .does([](Console &console) {
            Report report;
            addBoard(report);
            addRecord(report);
            Model model;
            const int32_t status = readModel(model);
            addModelsParts(report, model, status);
            return console.print(report);
        });
}

} // namespace iodbg
