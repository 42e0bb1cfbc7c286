// iodbg sfp: cages and the modules in them.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/model.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/transceivers/diagnostics.h"
#include "iodbg/transceivers/identification.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>

namespace iodbg {

namespace {

constexpr uint32_t kPhyRegisters = 32;

std::vector<uint32_t> readCages() {
    Model model;
    require(readModel(model), "read the device id");
    return model.cages;
}

/** The library does not check the ports of its lines, so iodbg does. */
void requireCage(uint32_t port) {
    const std::vector<uint32_t> cages = readCages();
    if (std::find(cages.begin(), cages.end(), port) != cages.end())
        return;
    throw Failure::refused("use " + portName(port), BSP_E_INVALID,
                           "the SFP cages of this board are " + portsCell(cages).text);
}

Cell checksumCell(const PageChecksum &sum) {
    return flagCell(sum.isRight(), "right",
                    "wrong: " + hexNumber(sum.stored, 2) + " stored, " +
                        hexNumber(sum.computed, 2) + " computed");
}

// sfp list

ExitCode list(Console &console) {
    const std::vector<uint32_t> cages = readCages();
    Report report;
    report.parts.emplace_back(cageTable(report, cages));
    return console.print(report);
}

// sfp show

void addIdentification(Section &section, const Identification &module) {
    section.add("kind", "Kind", textCell(module.kind));
    section.add("connector", "Connector", textCell(module.connector));
    section.add("compliance", "Compliance", textCell(listed(module.compliances)));
    section.add("encoding", "Encoding", textCell(module.encoding));
    section.add("rate_mbaud", "Rate, Mbaud", numberCell(module.rateMbaud));
    section.add("wavelength_nm", "Wavelength, nm",
                module.wavelengthNm == 0 ? Cell{"none: copper", nullptr}
                                         : numberCell(module.wavelengthNm));
    section.add("reach", "Reach", textCell(listed(module.reaches)));
    section.add("vendor", "Vendor", textCell(module.vendor));
    section.add("oui", "Vendor's OUI", textCell(module.oui));
    section.add("part_number", "Part number", textCell(module.partNumber));
    section.add("revision", "Revision", textCell(module.revision));
    section.add("serial_number", "Serial number", textCell(module.serialNumber));
    section.add("date", "Made", textCell(module.date));
    section.add("base_checksum_ok", "Checksum, base fields", checksumCell(module.base));
    section.add("extended_checksum_ok", "Checksum, other fields", checksumCell(module.extended));
}

/** How a quantity is named and written. */
struct QuantityText {
    const char *key;
    const char *label;
    const char *unit;
    double thousandths; // whole numbers in programs' answers, in one unit
    int decimals;
};

constexpr std::array<QuantityText, kQuantities> kQuantityTexts = {{
    {"temperature_mc", "Temperature", "C", 1000, 1},
    {"supply_voltage_uv", "Supply voltage", "V", 1000000, 3},
    {"bias_current_ua", "Bias current", "mA", 1000, 2},
    {"tx_power_nw", "Transmitted power", "mW", 1000000, 4},
    {"rx_power_nw", "Received power", "mW", 1000000, 4},
}};

const char *judgementText(Judgement judgement) {
    switch (judgement) {
    case Judgement::Normal:
        return "normal";
    case Judgement::LowWarning:
        return "low warning";
    case Judgement::HighWarning:
        return "high warning";
    case Judgement::LowAlarm:
        return "low alarm";
    case Judgement::HighAlarm:
        return "high alarm";
    }
    return "?";
}

bool isPower(Quantity quantity) {
    return quantity == Quantity::TxPower || quantity == Quantity::RxPower;
}

Cell valueCell(const QuantityText &text, Quantity quantity, double value) {
    std::array<char, 48> number{};
    std::snprintf(number.data(), number.size(), "%.*f %s", text.decimals, value, text.unit);
    return {std::string(number.data()) + (isPower(quantity) ? " (" + dbmText(value) + ")" : ""),
            std::llround(value * text.thousandths)};
}

Table diagnosticsTable(const Diagnostics &diagnostics) {
    Table table = {"diagnostics",
                   {{"quantity", "QUANTITY"},
                    {"value", "VALUE"},
                    {"judgement", "JUDGEMENT"},
                    {"low_alarm", "LOW ALARM"},
                    {"low_warning", "LOW WARNING"},
                    {"high_warning", "HIGH WARNING"},
                    {"high_alarm", "HIGH ALARM"}},
                   {},
                   TooWide::MoveColumns};
    for (const Measurement &measured : diagnostics.measurements) {
        const QuantityText &text = kQuantityTexts[static_cast<size_t>(measured.quantity)];
        const auto cell = [&](double value) { return valueCell(text, measured.quantity, value); };
        table.rows.push_back({{text.label, std::string(text.key)},
                              cell(measured.value),
                              textCell(judgementText(measured.judgement)),
                              cell(measured.lowAlarm),
                              cell(measured.lowWarning),
                              cell(measured.highWarning),
                              cell(measured.highAlarm)});
    }
    return table;
}

const char *copperText(uint16_t kind) {
    switch (kind) {
    case BSP_COPPER_MODE_4:
        return "copper, PHY mode 4";
    case BSP_COPPER_MODE_12:
        return "copper, PHY mode 12";
    case BSP_COPPER_OTHER_MODE:
        return "copper, another PHY mode";
    default:
        return "not a copper module";
    }
}

void addCopper(Report &report, Section &section, uint32_t port) {
    uint16_t kind = BSP_COPPER_NONE;
    const int32_t status = bspElectricModerTypeGet(port, &kind);
    section.add("copper_kind", "Copper",
                report.tried(section.path("copper_kind"), status, {copperText(kind), kind}));
}

void addDiagnostics(Report &report, Section &section, uint32_t port, const Identification &module) {
    section.add("has_diagnostics", "Diagnostics",
                flagCell(module.hasDiagnostics,
                         module.isExternallyCalibrated ? "yes, to be calibrated" : "yes", "none"));
    if (!module.hasDiagnostics)
        return;
    Bytes page;
    const int32_t status = readSfpPage(port, BSP_SFP_DIAGNOSTICS, kDiagnosticsSize, page);
    if (status != BSP_OK) {
        section.add("diagnostics_checksum_ok", "Checksum, diagnostics",
                    report.tried(section.path("diagnostics"), status, {}));
        return;
    }
    const Diagnostics diagnostics = diagnosticsOf(page, module.isExternallyCalibrated);
    section.add("diagnostics_checksum_ok", "Checksum, diagnostics",
                checksumCell(diagnostics.checksum));
    section.add("data_ready", "Data ready", flagCell(diagnostics.isReady, "yes", "not yet"));
    report.parts.emplace_back(diagnosticsTable(diagnostics));
}

ExitCode show(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    CageLines lines;
    addCageLines(report, section, port, lines);
    Bytes page;
    const int32_t status =
        lines.isPresent == 0 ? int32_t{BSP_OK}
                             : readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
    if (status != BSP_OK) {
        section.add("kind", "Kind", report.tried("identification", status, {}));
    } else if (lines.isPresent != 0) {
        const Identification module = identificationOf(page);
        addIdentification(section, module);
        addCopper(report, section, port);
        addDiagnostics(report, section, port, module);
    }
    report.parts.insert(report.parts.begin(), section);
    return console.print(report);
}

// sfp dump

ExitCode dump(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    std::string text;
    Section section = {"", "", {}};
    for (const auto &[page, key, title] :
         {std::tuple{BSP_SFP_IDENTIFICATION, "a0h", "Identification page, A0h"},
          std::tuple{BSP_SFP_DIAGNOSTICS, "a2h", "Diagnostics page, A2h"}}) {
        Bytes bytes;
        const int32_t status = readSfpPage(port, page, BSP_SFP_MEMORY_SIZE, bytes);
        const Cell cell = report.tried(key, status, {hexBytes(bytes), hexBytes(bytes)});
        section.add(key, title, cell);
        text += std::string(title) + ":" +
                (status == BSP_OK ? "\n" + hexDump(0, bytes) : " " + cell.text + "\n");
    }
    report.parts.emplace_back(section);
    return console.print(report, text);
}

// sfp phy

ExitCode phy(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    Table table = {"registers", {{"register", "REGISTER"}, {"value", "VALUE"}}, {}};
    for (uint32_t reg = 0; reg < kPhyRegisters; ++reg) {
        uint16_t value = 0;
        require(ioLaserPhyGet(port, reg, &value), "read PHY register " + std::to_string(reg) +
                                                      " of the module in " + portName(port) +
                                                      ", which may be no copper module");
        table.rows.push_back({numberCell(reg), hexCell(value, 4)});
    }
    report.parts.emplace_back(table);
    return console.print(report);
}

// sfp tx

ExitCode switchTransmitter(Console &console, uint32_t port, uint32_t wanted) {
    requireCage(port);
    require(ioLaserControlSet(port, wanted), "switch the transmitter of " + portName(port));
    uint32_t state = 0;
    require(ioLaserControlGet(port, &state), "read the transmitter's line back");
    if (state != wanted)
        throw Failure(ExitCode::ReadBack,
                      "the transmitter-disable line of " + portName(port) +
                          " was written and did not change; check what else writes its register");
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    section.add("transmitter_on", "Transmitter", flagCell(state == BSP_LASER_ON, "on", "off"));
    return console.print({{section}, {}});
}

using OfPort = ExitCode (*)(Console &, uint32_t port);

void addOfPort(Command &sfp, const std::string &name, const std::string &help,
               const std::string &examplePort, OfPort run) {
    const auto port = std::make_shared<uint32_t>(0);
    Command &command = sfp.command(name, help);
    command.argument("PORT", "Front-panel port of the cage", numberFromOne(*port));
    command.example("iodbg sfp " + name + " " + examplePort);
    command.does([port, run](Console &console) { return run(console, *port); });
}

void defineSfp(Command &sfp) {
    sfp.command("list", "Show all cages: lines, and what is plugged")
        .example("iodbg sfp list")
        .example("iodbg sfp list --json")
        .does(list);
    addOfPort(sfp, "show", "Show a module: identification, diagnostics with limits, checksums",
              "49", show);
    addOfPort(sfp, "dump", "Show a module's pages byte for byte", "49", dump);
    addOfPort(sfp, "phy", "Show the PHY registers of a copper module", "50", phy);

    const auto port = std::make_shared<uint32_t>(0);
    const auto state = std::make_shared<uint32_t>(0);
    Command &tx = sfp.command("tx", "Switch a transmitter, and read its line back");
    tx.argument("PORT", "Front-panel port of the cage", numberFromOne(*port));
    tx.argument("STATE", "on|off", oneOf(*state, {{"on", BSP_LASER_ON}, {"off", BSP_LASER_OFF}}));
    tx.example("iodbg sfp tx 49 off");
    tx.does([port, state](Console &console) { return switchTransmitter(console, *port, *state); });
}

} // namespace

void addSfpCommands(Command &root) {
    root.group("sfp", "SFP cages and modules", defineSfp).onlyAfter(requireKernelModule);
}

} // namespace iodbg
