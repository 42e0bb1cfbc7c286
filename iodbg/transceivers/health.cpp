#include "iodbg/transceivers/health.h"

#include "bsp.h"
#include "iodbg/core/status_table.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/diagnostics.h"
#include "iodbg/transceivers/identification.h"

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

void addModule(Findings &findings, uint32_t port) {
    const Subject subject = subjectOf(port);
    Bytes page;
    if (const int32_t status = readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
        status != BSP_OK) {
        Finding finding = silent(subject, status);
        finding.advice = "pull the module and plug it again; then replace it";
        findings.push_back(finding);
        return;
    }
    const Identification module = identificationOf(page);
    if (!module.base.isRight() || !module.extended.isRight())
        findings.push_back(
            {subject, Code::SfpChecksumWrong, "a checksum of its identification is wrong"});
    if (!module.hasDiagnostics)
        return;
    if (const int32_t status = readSfpPage(port, BSP_SFP_DIAGNOSTICS, kDiagnosticsSize, page);
        status != BSP_OK)
        findings.push_back({subject, Code::SfpDiagnosticsUnreadable,
                            "its diagnostics cannot be read: " + nameAndNumber(status)});
    else
        addMeasurements(findings, subject, diagnosticsOf(page, module.isExternallyCalibrated));
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

/** What the lines of a cage tell; false when there is no module, or nothing can be read. */
bool addCageLines(Findings &findings, std::vector<DarkCage> &dark, const Model &model,
                  uint32_t port, CageLines &lines) {
    if (const int32_t status = readCageLines(port, lines); status != BSP_OK) {
        dark.push_back({port, status});
        return false;
    }
    if (lines.isPresent != 0 && model.hasCageStatus(port))
        addLines(findings, subjectOf(port), lines);
    return lines.isPresent != 0;
}

void addCage(Findings &findings, std::vector<DarkCage> &dark, const Model &model, uint32_t port) {
    const size_t before = findings.size();
    CageLines lines;
    if (!addCageLines(findings, dark, model, port, lines))
        return;
    addModule(findings, port);
    if (findings.size() == before)
        findings.push_back(good(subjectOf(port), lines.transmitter == BSP_LASER_ON
                                                     ? "module works"
                                                     : "its transmitter is switched off"));
}

} // namespace

Findings transceiverFindings(const Model &model) {
    Findings findings;
    std::vector<DarkCage> dark;
    for (const uint32_t port : model.cages)
        addCage(findings, dark, model, port);
    addDarkCages(findings, dark);
    if (findings.empty())
        findings.push_back(good({Unit::SfpPort}, "no module is plugged"));
    return findings;
}

Findings cageLineFindings(const Model &model) {
    Findings findings;
    std::vector<DarkCage> dark;
    CageLines lines;
    for (const uint32_t port : model.cages)
        addCageLines(findings, dark, model, port, lines);
    addDarkCages(findings, dark);
    return findings;
}

} // namespace iodbg
