#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/sfp_cage.h"
#include "iodbg/sfp_diagnostics.h"
#include "iodbg/sfp_identification.h"
#include "iodbg/status_table.h"

namespace iodbg {

namespace {

constexpr const char *kQuantityNames[kQuantities] = {
    "temperature", "supply voltage", "bias current", "transmitted power", "received power"};

/** Whether a measurement out of its limits only shows what has been said, or what was asked for. */
bool isExplained(const Measurement &measured, const Diagnostics &diagnostics) {
    if (measured.quantity == Quantity::RxPower)
        return diagnostics.hasLostSignal;
    const bool isTransmitters =
        measured.quantity == Quantity::BiasCurrent || measured.quantity == Quantity::TxPower;
    return isTransmitters && (diagnostics.isTxDisabled || diagnostics.hasTxFault);
}

void addMeasurements(Findings &findings, const std::string &name, const Diagnostics &diagnostics) {
    for (const Measurement &measured : diagnostics.measurements) {
        if (isExplained(measured, diagnostics))
            continue;
        const char *quantity = kQuantityNames[static_cast<size_t>(measured.quantity)];
        const bool isHigh = measured.judgement == Judgement::HighAlarm ||
                            measured.judgement == Judgement::HighWarning;
        const bool isAlarm =
            measured.judgement == Judgement::HighAlarm || measured.judgement == Judgement::LowAlarm;
        if (measured.judgement != Judgement::Normal)
            findings.push_back({name, isAlarm ? Severity::Fault : Severity::Warning,
                                std::string(quantity) + (isHigh ? " too high" : " too low"),
                                "see 'iodbg sfp show'; check fibre and far end, then the module"});
    }
}

void addLines(Findings &findings, const std::string &name, const CageLines &lines) {
    if (lines.hasTxFault != 0)
        findings.push_back({name, Severity::Fault, "transmitter fault", "replace the module"});
    if (lines.hasLostSignal != 0 && lines.transmitter == BSP_LASER_ON)
        findings.push_back({name, Severity::Warning, "no signal arrives",
                            "check fibre or cable, and that the far end transmits"});
}

void addModule(Findings &findings, uint32_t port, const std::string &name) {
    Bytes page;
    if (const int32_t status = readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
        status != BSP_OK) {
        findings.push_back({name, Severity::Fault, "does not answer: " + nameAndNumber(status),
                            "pull the module and plug it again; then replace it"});
        return;
    }
    const Identification module = identificationOf(page);
    if (!module.base.isRight() || !module.extended.isRight())
        findings.push_back({name, Severity::Warning, "a checksum of its identification is wrong",
                            "see 'iodbg sfp show'; replace the module"});
    if (!module.hasDiagnostics)
        return;
    if (const int32_t status = readSfpPage(port, BSP_SFP_DIAGNOSTICS, kDiagnosticsSize, page);
        status != BSP_OK)
        findings.push_back(unreadable(name, status));
    else
        addMeasurements(findings, name, diagnosticsOf(page, module.isExternallyCalibrated));
}

std::string cageName(uint32_t port) {
    return "SFP " + portName(port);
}

/** What the lines of a cage tell; false when there is no module, or nothing can be read. */
bool addCageLines(Findings &findings, const Model &model, uint32_t port, CageLines &lines) {
    if (const int32_t status = readCageLines(port, lines); status != BSP_OK) {
        findings.push_back(unreadable(cageName(port), status));
        return false;
    }
    if (lines.isPresent != 0 && model.hasCageStatus(port))
        addLines(findings, cageName(port), lines);
    return lines.isPresent != 0;
}

void addCage(Findings &findings, const Model &model, uint32_t port) {
    const size_t before = findings.size();
    CageLines lines;
    if (!addCageLines(findings, model, port, lines))
        return;
    addModule(findings, port, cageName(port));
    if (findings.size() == before)
        findings.push_back(good(cageName(port), lines.transmitter == BSP_LASER_ON
                                                    ? "module works"
                                                    : "its transmitter is switched off"));
}

} // namespace

Findings transceiverFindings(const Model &model) {
    Findings findings;
    for (const uint32_t port : model.cages)
        addCage(findings, model, port);
    if (findings.empty())
        findings.push_back(good("SFP cages", "no module is plugged"));
    return findings;
}

Findings cageLineFindings(const Model &model) {
    Findings findings;
    CageLines lines;
    for (const uint32_t port : model.cages)
        addCageLines(findings, model, port, lines);
    return findings;
}

} // namespace iodbg
