#include "iodbg/transceivers/health.h"

#include "bsp.h"
#include "iodbg/core/status_table.h"
#include "iodbg/transceivers/diagnostics.h"

namespace iodbg {

namespace {

constexpr const char *kQuantityNames[kQuantities] = {
    "temperature", "supply voltage", "bias current", "transmitted power", "received power"};

Subject subjectOf(uint32_t port) {
    return {Unit::SfpPort, port};
}

/** Whether a measurement out of its limits only shows what has been said, or what was asked for. */
bool isExplained(const Measurement &measured, const Diagnostics &diagnostics) {
    if (measured.quantity == Quantity::RxPower)
        return diagnostics.hasLostSignal;
    const bool isTransmitters =
        measured.quantity == Quantity::BiasCurrent || measured.quantity == Quantity::TxPower;
    return isTransmitters && (diagnostics.isTxDisabled || diagnostics.hasTxFault);
}

void addMeasurements(Findings &findings, const Subject &port, const Diagnostics &diagnostics) {
    for (const Measurement &measured : diagnostics.measurements) {
        if (isExplained(measured, diagnostics))
            continue;
        const char *quantity = kQuantityNames[static_cast<size_t>(measured.quantity)];
        const bool isHigh = measured.judgement == Judgement::HighAlarm ||
                            measured.judgement == Judgement::HighWarning;
        const bool isAlarm =
            measured.judgement == Judgement::HighAlarm || measured.judgement == Judgement::LowAlarm;
        if (measured.judgement != Judgement::Normal)
            findings.push_back({port, isAlarm ? Code::SfpAlarm : Code::SfpWarning,
                                std::string(quantity) + (isHigh ? " too high" : " too low")});
    }
}

void addLines(Findings &findings, const Subject &port, const CageLines &lines) {
    if (lines.hasTxFault != 0)
        findings.push_back({port, Code::SfpTxFault, "transmitter fault"});
    if (lines.hasLostSignal != 0 && lines.transmitter == BSP_LASER_ON)
        findings.push_back({port, Code::SfpNoSignal, "no signal arrives"});
}

void addModule(Findings &findings, uint32_t port, const Module &module) {
    const Subject subject = subjectOf(port);
    if (module.status != BSP_OK) {
        Finding finding = silent(subject, module.status);
        finding.advice = "pull the module and plug it again; then replace it";
        findings.push_back(finding);
        return;
    }
    if (!module.identification.base.isRight() || !module.identification.extended.isRight())
        findings.push_back(
            {subject, Code::SfpChecksumWrong, "a checksum of its identification is wrong"});
    if (module.diagnosticsStatus != BSP_OK)
        findings.push_back(
            {subject, Code::SfpDiagnosticsUnreadable,
             "its diagnostics cannot be read: " + nameAndNumber(module.diagnosticsStatus)});
    if (module.diagnostics)
        addMeasurements(findings, subject, *module.diagnostics);
}

/** A cage of which the CPLD tells nothing. */
struct DarkCage {
    uint32_t port;
    int32_t status;
};

/** One register has the lines of several cages. */
void addDarkCages(Findings &findings, const std::vector<DarkCage> &cages) {
    if (cages.empty())
        return;
    if (cages.size() == 1) {
        findings.push_back(unreadable(subjectOf(cages[0].port), cages[0].status));
        return;
    }
    std::vector<int64_t> ports;
    ports.reserve(cages.size());
    for (const DarkCage &cage : cages)
        ports.push_back(cage.port);
    Finding finding = unreadable({Unit::SfpPort}, cages[0].status);
    finding.text = "lines of ports " + listCell(ports).text + " " + finding.text;
    findings.push_back(finding);
}

/** Reads the lines of a cage; false when there is no module, or nothing can be read. */
bool readPluggedCage(std::vector<DarkCage> &dark, uint32_t port, CageLines &lines) {
    if (const int32_t status = readCageLines(port, lines); status != BSP_OK) {
        dark.push_back({port, status});
        return false;
    }
    return lines.isPresent != 0;
}

} // namespace

Findings pluggedCageFindings(const Model &model, uint32_t port, const CageLines &lines,
                             const Module &module) {
    Findings findings;
    if (model.hasCageStatus(port))
        addLines(findings, subjectOf(port), lines);
    addModule(findings, port, module);
    if (findings.empty())
        findings.push_back(good(subjectOf(port), lines.transmitter == BSP_LASER_ON
                                                     ? "module works"
                                                     : "its transmitter is switched off"));
    return findings;
}

Findings transceiverFindings(const Model &model) {
    Findings findings;
    std::vector<DarkCage> dark;
    CageLines lines;
    for (const uint32_t port : model.cages) {
        if (!readPluggedCage(dark, port, lines))
            continue;
        const Findings found = pluggedCageFindings(model, port, lines, readModule(port));
        findings.insert(findings.end(), found.begin(), found.end());
    }
    addDarkCages(findings, dark);
    if (findings.empty())
        findings.push_back(good({Unit::SfpPort}, "no module is plugged"));
    return findings;
}

Findings cageLineFindings(const Model &model) {
    Findings findings;
    std::vector<DarkCage> dark;
    CageLines lines;
    for (const uint32_t port : model.cages) {
        if (readPluggedCage(dark, port, lines) && model.hasCageStatus(port))
            addLines(findings, subjectOf(port), lines);
    }
    addDarkCages(findings, dark);
    return findings;
}

} // namespace iodbg
