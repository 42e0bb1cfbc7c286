#include "iodbg/transceivers/cage_table.h"

#include "bsp.h"
#include "iodbg/core/format.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/identification.h"

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

std::vector<Cell> cageRow(Report &report, uint32_t port) {
    CageLines lines;
    Section section = {portName(port), "", {}};
    addCageLines(report, section, port, lines);
    std::vector<Cell> row = {numberCell(port)};
    for (const Field &field : section.fields)
        row.push_back(field.cell);
    Bytes page;
    if (lines.isPresent == 0) {
        row.insert(row.end(), 3, {"", nullptr});
        return row;
    }
    if (const int32_t status = readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
        status != BSP_OK) {
        row.push_back(report.tried(section.path("identification"), status, unread(status)));
        row.insert(row.end(), 2, {"", nullptr});
        return row;
    }
    const Identification module = identificationOf(page);
    row.push_back(textCell(listed(module.compliances)));
    row.push_back(memoryCell(module.vendor));
    row.push_back(memoryCell(module.partNumber));
    return row;
}

} // namespace

Table cageTable(Report &report, const std::vector<uint32_t> &cages) {
    Table table = {"cages",
                   {{"port", "PORT"},
                    {"present", "MODULE"},
                    {"transmitter_on", "TX"},
                    {"rx_loss", "RX LOSS"},
                    {"tx_fault", "TX FAULT"},
                    {"compliance", "KIND"},
                    {"vendor", "VENDOR"},
                    {"part_number", "PART"}},
                   {}};
    for (const uint32_t port : cages)
        table.rows.push_back(cageRow(report, port));
    return table;
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
