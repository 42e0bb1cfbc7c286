#include "iodbg/transceivers/measurements.h"

#include "bsp.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/module.h"
#include "iodbg/transceivers/module_report.h"

namespace iodbg {

namespace {

constexpr char kWithinLimits[] = "normal";

/** In the table's own order: quantity, value, judgement. */
void addModuleRow(Table &modules, Table &alarms, uint32_t port, const Table &measured) {
    std::vector<Cell> row = {numberCell(port)};
    for (const std::vector<Cell> &quantity : measured.rows) {
        const std::string key = std::get<std::string>(quantity[0].value);
        if (modules.columns.size() <= row.size())
            modules.columns.push_back({key, ""});
        row.push_back(quantity[1]);
        if (quantity[2].text != kWithinLimits)
            alarms.rows.push_back(
                {numberCell(port), textCell(key.substr(0, key.rfind('_'))), quantity[2]});
    }
    modules.rows.push_back(row);
}

} // namespace

void addModuleMeasurements(Report &report, const std::vector<uint32_t> &ports) {
    Table modules = {"modules", {{"port", ""}}, {}};
    Table alarms = {"alarms", {{"port", ""}, {"quantity", ""}, {"judgement", ""}}, {}};
    for (const uint32_t port : ports) {
        // That it does not answer is said where its cage is shown.
        const Module module = readModule(port);
        if (module.diagnostics)
            addModuleRow(modules, alarms, port, measurementsTable(*module.diagnostics));
    }
    report.parts.emplace_back(modules);
    report.parts.emplace_back(alarms);
}

} // namespace iodbg
