#include "iodbg/transceivers/cage_table.h"

#include "bsp.h"
#include "iodbg/core/findings.h"
#include "iodbg/core/format.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/health.h"
#include "iodbg/transceivers/module.h"
#include "iodbg/transceivers/module_report.h"

#include <algorithm>

namespace iodbg {

namespace {

Cell unread(int32_t status) {
    return {"cannot be read: status " + std::to_string(status), nullptr};
}

/** What a module's memory says of it. A spoiled one must not push the table apart. */
Cell memoryCell(const std::string &text) {
    constexpr size_t kLongest = 16;
    return {shortened(text, kLongest), text};
}

/** A quantity of a module without diagnostics, or without an answer, is none. */
Cell measuredCell(const Module &module, Quantity quantity) {
    if (!module.diagnostics)
        return {"-", nullptr};
    const double value = module.diagnostics->measurements[static_cast<size_t>(quantity)].value;
    const bool isPower = quantity != Quantity::Temperature;
    Cell cell = quantityCell(quantity, value);
    if (isPower)
        cell.text = dbmText(value);
    return cell;
}

/** As `iodbg check` says it: the worst of what was found, and for people all of it. */
Cell verdictCell(const Findings &findings) {
    Severity worst = Severity::Good;
    std::string text;
    for (const Finding &finding : findings) {
        worst = std::max(worst, finding.severity());
        text += (text.empty() ? "" : "; ") + finding.text;
    }
    const std::string verdict = severityKey(worst);
    return {worst == Severity::Good ? verdict : verdict + ": " + text, verdict};
}

std::vector<Cell> cageRow(Report &report, const Model &model, uint32_t port) {
    constexpr size_t kOfModules = 7; // columns that only a module fills
    CageLines lines;
    Section section = {portName(port), "", {}};
    addCageLines(report, section, port, lines);
    std::vector<Cell> row = {numberCell(port)};
    for (const Field &field : section.fields)
        row.push_back(field.cell);
    if (lines.isPresent == 0) {
        row.insert(row.end(), kOfModules, {"", nullptr});
        return row;
    }
    const Module module = readModule(port);
    if (module.status == BSP_OK) {
        row.push_back(textCell(listed(module.identification.compliances)));
        row.push_back(memoryCell(module.identification.vendor));
        row.push_back(memoryCell(module.identification.partNumber));
    } else {
        row.push_back(
            report.tried(section.path("identification"), module.status, unread(module.status)));
        row.insert(row.end(), 2, {"", nullptr});
    }
    if (module.diagnosticsStatus != BSP_OK)
        report.tried(section.path("diagnostics"), module.diagnosticsStatus, {});
    for (const Quantity quantity : {Quantity::Temperature, Quantity::TxPower, Quantity::RxPower})
        row.push_back(measuredCell(module, quantity));
    row.push_back(verdictCell(pluggedCageFindings(model, port, lines, module)));
    return row;
}

constexpr size_t kPresentColumn = 1;
constexpr size_t kFirstOfLight = 8; // behind what is plugged

} // namespace

Table cageTable(Report &report, const Model &model, const std::vector<uint32_t> &cages) {
    Table table = {"cages",
                   {{"port", "PORT"},
                    {"present", "MODULE"},
                    {"transmitter_on", "TX"},
                    {"rx_loss", "RX LOSS"},
                    {"tx_fault", "TX FAULT"},
                    {"compliance", "KIND"},
                    {"vendor", "VENDOR"},
                    {"part_number", "PART"},
                    {"temperature_mc", "TEMPERATURE"},
                    {"tx_power_nw", "TX POWER"},
                    {"rx_power_nw", "RX POWER"},
                    {"verdict", "VERDICT"}},
                   {}};
    for (const uint32_t port : cages)
        table.rows.push_back(cageRow(report, model, port));
    return table;
}

std::string cagesText(const Table &cages) {
    Table lines = {"", {cages.columns.begin(), cages.columns.begin() + kFirstOfLight}, {}};
    Table light = {"", {cages.columns.begin() + kFirstOfLight, cages.columns.end()}, {}};
    light.columns.insert(light.columns.begin(), cages.columns.front());
    for (const std::vector<Cell> &row : cages.rows) {
        lines.rows.emplace_back(row.begin(), row.begin() + kFirstOfLight);
        if (row[kPresentColumn].value != Value(true))
            continue;
        light.rows.emplace_back(row.begin() + kFirstOfLight, row.end());
        light.rows.back().insert(light.rows.back().begin(), row.front());
    }
    return Report{{lines, light}, {}}.toText();
}

int32_t readCages(const Model &model, CageSummary &summary) {
    for (const uint32_t port : model.cages) {
        CageLines lines;
        if (const int32_t status = readCageLines(port, lines); status != BSP_OK)
            return status;
        if (lines.isPresent == 0)
            continue;
        summary.plugged.push_back(port);
        if (lines.hasLostSignal != 0 && model.hasCageStatus(port))
            summary.lostSignal.push_back(port);
        if (lines.hasTxFault != 0 && model.hasCageStatus(port))
            summary.txFault.push_back(port);
    }
    return BSP_OK;
}

Cell portsCell(const std::vector<uint32_t> &ports) {
    return listCell({ports.begin(), ports.end()});
}

} // namespace iodbg
