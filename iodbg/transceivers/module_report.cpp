#include "iodbg/transceivers/module_report.h"

#include "bsp.h"
#include "iodbg/core/format.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace iodbg {

namespace {

Cell checksumCell(const PageChecksum &sum) {
    return flagCell(sum.isRight(), "right",
                    "wrong: " + hexNumber(sum.stored, 2) + " stored, " +
                        hexNumber(sum.computed, 2) + " computed");
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

} // namespace

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

void addCopper(Report &report, Section &section, uint32_t port) {
    uint16_t kind = BSP_COPPER_NONE;
    const int32_t status = bspElectricModerTypeGet(port, &kind);
    section.add("copper_kind", "Copper",
                report.tried(section.path("copper_kind"), status, {copperText(kind), kind}));
}

void addDiagnostics(Report &report, Section &section, const Module &module) {
    const Identification &identification = module.identification;
    section.add("has_diagnostics", "Diagnostics",
                flagCell(identification.hasDiagnostics,
                         identification.isExternallyCalibrated ? "yes, to be calibrated" : "yes",
                         "none"));
    if (!identification.hasDiagnostics)
        return;
    if (!module.diagnostics) {
        section.add("diagnostics_checksum_ok", "Checksum, diagnostics",
                    report.tried(section.path("diagnostics"), module.diagnosticsStatus, {}));
        return;
    }
    section.add("diagnostics_checksum_ok", "Checksum, diagnostics",
                checksumCell(module.diagnostics->checksum));
    section.add("data_ready", "Data ready",
                flagCell(module.diagnostics->isReady, "yes", "not yet"));
}

Table measurementsTable(const Diagnostics &diagnostics) {
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
        const auto cell = [&](double value) { return quantityCell(measured.quantity, value); };
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

Cell quantityCell(Quantity quantity, double value) {
    const QuantityText &text = kQuantityTexts[static_cast<size_t>(quantity)];
    std::array<char, 48> number{};
    std::snprintf(number.data(), number.size(), "%.*f %s", text.decimals, value, text.unit);
    return {std::string(number.data()) + (isPower(quantity) ? " (" + dbmText(value) + ")" : ""),
            std::llround(value * text.thousandths)};
}

} // namespace iodbg
