#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/boot_block.h"
#include "iodbg/calendar.h"
#include "iodbg/failure.h"
#include "iodbg/flash.h"
#include "iodbg/format.h"
#include "iodbg/os_bank.h"
#include "iodbg/record.h"
#include "iodbg/report.h"
#include "iodbg/sfp_cage.h"
#include "iodbg/sfp_diagnostics.h"
#include "iodbg/sfp_identification.h"
#include "iodbg/status_table.h"
#include "iodbg/supplies.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

// Limits of the board's sensor, in degrees Celsius.
constexpr int32_t kColdest = 0;
constexpr int32_t kWarm = 60;
constexpr int32_t kHot = 75;

constexpr int64_t kTolerableDrift = 60; // seconds between chip and system
constexpr uint32_t kSlowPart = 4;       // a fan that lacks this part of another's speed is failing

Finding good(const std::string &subject, const std::string &text) {
    return {subject, Severity::Good, text, ""};
}

// Identity

Finding recordFinding() {
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status != BSP_OK)
        return unreadable("product record", status);
    const Verdict verdict = judge(record);
    if (!verdict.hasMagic)
        return {"product record", Severity::Fault, "there is none",
                "store one with 'iodbg identity set record --file FILE'"};
    if (!verdict.isCrcRight())
        return {"product record", Severity::Fault,
                "its CRC is " + hexNumber(verdict.storedCrc, 8) + " and should be " +
                    hexNumber(verdict.computedCrc, 8),
                "compare it with the label, then store it again with --renew-crc"};
    return good("product record", "whole");
}

Finding serialFinding() {
    std::array<char, sizeof(BspDevinfo)> serial{};
    uint32_t length = 0;
    if (const int32_t status = ioSerialNumGet(serial.data(), &length); status != BSP_OK)
        return unreadable("serial number", status);
    if (serial[0] == '\0')
        return {"serial number", Severity::Warning, "there is none",
                "store it with 'iodbg identity set serial TEXT'"};
    return good("serial number",
                fieldText({reinterpret_cast<const uint8_t *>(serial.data()), serial.size()}));
}

Finding macFinding() {
    Mac mac{};
    if (const int32_t status = ioMacAddrGet(0, mac.data()); status != BSP_OK)
        return unreadable("MAC address", status);
    const bool isGroup = (mac[0] & 1) != 0;
    const bool isZero = std::all_of(mac.begin(), mac.end(), [](uint8_t byte) { return byte == 0; });
    if (isGroup || isZero)
        return {"MAC address", Severity::Fault, macText(mac) + " is no address of a unit",
                "store it with 'iodbg identity set mac'"};
    return good("MAC address", macText(mac));
}

// Fans

struct FanState {
    int32_t status;
    uint32_t isPresent;
    uint32_t speed;
};

FanState readFan(const Model &model, uint32_t fan) {
    FanState state = {BSP_OK, 1, 0};
    if (model.fanPresence == FanPresence::OwnLine)
        state.status = ioFanPresentGet(static_cast<int32_t>(fan), &state.isPresent);
    if (state.status == BSP_OK)
        state.status = ioFanSpeedGet(fan, &state.speed);
    return state;
}

Finding absentFan(const Model &model, const std::string &name) {
    if (model.fansShareTachometer)
        return {name, Severity::Fault, "it or its neighbour is missing", "look which, plug it"};
    return {name, Severity::Fault, "not there", "plug it"};
}

Finding standingFan(const Model &model, const std::string &name) {
    if (model.fansShareTachometer)
        return {name, Severity::Fault, "it or its neighbour stands still",
                "look which, replace it"};
    return {name, Severity::Fault, "stands still or is not there", "plug it, or replace it"};
}

/** fastest: the speed of the fastest fan of the unit. All run at one level, so they are alike. */
Finding fanFinding(const Model &model, const std::string &name, const FanState &fan,
                   uint32_t fastest) {
    if (fan.status != BSP_OK)
        return unreadable(name, fan.status);
    // The library counts two on models of which nothing tells whether they have any.
    if (model.fanPresence == FanPresence::Unknown && fastest == 0)
        return good(name, "none seen");
    if (fan.isPresent == 0)
        return absentFan(model, name);
    if (fan.speed == 0)
        return standingFan(model, name);
    const std::string text = std::to_string(fan.speed) + " rpm";
    if (fan.speed < fastest / kSlowPart * (kSlowPart - 1))
        return {name, Severity::Fault, text + ", while the fastest has " + std::to_string(fastest),
                "replace it"};
    return good(name, text);
}

// Supplies

Finding supplyFinding(const Model &model, int32_t supply) {
    const std::string name = "supply " + std::to_string(supply);
    bool isPlugged = false;
    if (const int32_t status = readPlugged(model, supply, isPlugged); status != BSP_OK)
        return unreadable(name, status);
    if (!isPlugged)
        return {name, Severity::Warning, "not plugged", "plug it, or live without a spare one"};
    int32_t code = 0;
    if (const int32_t status = ioPowerStatusGet(supply, &code); status != BSP_OK)
        return unreadable(name, status);
    if (code != 0)
        return {name, Severity::Fault, "its lines tell status " + std::to_string(code),
                "check its cable and its own lamp; replace it"};
    return good(name, "plugged, status 0");
}

// PoE

void addPoePorts(Findings &findings, uint32_t ports) {
    constexpr uint32_t kYes = 1; // 2: no
    std::vector<int64_t> faulty;
    for (uint32_t port = 1; port <= ports; ++port) {
        uint32_t fault = 0;
        if (const int32_t status = ioPoePortFaultGet(port, &fault); status != BSP_OK) {
            findings.push_back(unreadable("PoE port " + std::to_string(port), status));
            return;
        }
        if (fault == kYes)
            faulty.push_back(port);
    }
    if (faulty.empty())
        findings.push_back(good("PoE ports", "none has a fault"));
    else
        findings.push_back({"PoE ports", Severity::Warning, "fault on " + listCell(faulty).text,
                            "look at these devices and cables; 'iodbg poe status' tells more"});
}

// Flash

Finding bootFinding() {
    try {
        if (isErased(readBootBlock()))
            return {"boot settings", Severity::Warning, "none is stored, the defaults hold",
                    "set them with 'iodbg boot set'"};
    } catch (const Failure &failure) {
        return {"boot settings", Severity::Fault, failure.what(), ""};
    }
    return good("boot settings", "stored");
}

Finding bankFinding(uint32_t bank) {
    const std::string name = "bank " + std::to_string(bank);
    Bytes header;
    if (const int32_t status = readOsHeader(bank, header); status != BSP_OK)
        return unreadable(name, status);
    if (isErased(header))
        return {name, Severity::Warning, "holds no image",
                "write one with 'iodbg upgrade os FILE --bank " + std::to_string(bank) + "'"};
    return good(name, "has the header of an image");
}

// Transceivers

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
    if (const int32_t status =
            readSfpPage(port, SfpPage::Identification, kIdentificationSize, page);
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
    if (const int32_t status = readSfpPage(port, SfpPage::Diagnostics, kDiagnosticsSize, page);
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

Findings identityFindings() {
    return {recordFinding(), serialFinding(), macFinding()};
}

Findings temperatureFindings() {
    int32_t celsius = 0;
    if (const int32_t status = ioTemperGet(0, &celsius); status != BSP_OK)
        return {unreadable("temperature", status)};
    const std::string text = std::to_string(celsius) + " C";
    if (celsius > kHot)
        return {
            {"temperature", Severity::Fault, text + ", too hot", "check fans and air flow now"}};
    if (celsius > kWarm || celsius < kColdest)
        return {{"temperature", Severity::Warning, text, "check fans, air flow and the room"}};
    return {good("temperature", text)};
}

Findings fanFindings(const Model &model) {
    std::vector<FanState> fans;
    uint32_t fastest = 0;
    for (uint32_t fan = 1; fan <= model.fans; ++fan) {
        fans.push_back(readFan(model, fan));
        fastest = std::max(fastest, fans.back().speed);
    }
    Findings findings;
    for (uint32_t fan = 1; fan <= model.fans; ++fan)
        findings.push_back(fanFinding(model, "fan " + std::to_string(fan), fans[fan - 1], fastest));
    return findings;
}

Findings supplyFindings(const Model &model) {
    int32_t count = 0;
    if (const int32_t status = ioPowerNumGet(&count); status != BSP_OK)
        return {unreadable("supplies", status)};
    Findings findings;
    for (int32_t supply = 1; supply <= std::min(count, kSuppliesWithPresence); ++supply)
        findings.push_back(supplyFinding(model, supply));
    return findings;
}

Findings poeControllerFindings(const Model &model) {
    constexpr uint32_t kUpgradeFailed = 2;
    constexpr uint32_t kNoAnswer = 2;
    constexpr char kName[] = "PoE controller";
    if (model.poePorts == 0)
        return {};
    uint32_t isMissing = 0;
    if (const int32_t status = bspPoeOnlineGet(&isMissing); status != BSP_OK)
        return {unreadable(kName, status)};
    if (isMissing != 0)
        return {{kName, Severity::Fault, "missing", "check its card"}};
    uint32_t firmware = 0;
    if (ioPoeAppStatusGet(&firmware) == BSP_OK && firmware == kUpgradeFailed)
        return {
            {kName, Severity::Fault, "its last upgrade failed", "run 'iodbg poe upgrade FILE'"}};
    uint32_t isInitialised = kNoAnswer; // which it stays without being a failure
    if (const int32_t status = ioPoeInitStatusGet(&isInitialised); status != BSP_OK)
        return {unreadable(kName, status)};
    if (isInitialised == kNoAnswer)
        return {{kName, Severity::Fault, "does not answer",
                 "try again in a few seconds; if it stays so, write its firmware anew with 'iodbg "
                 "poe upgrade FILE'"}};
    if (isInitialised != 1)
        return {{kName, Severity::Warning, "not initialised", "run 'iodbg poe init'"}};
    return {good(kName, "initialised")};
}

Findings poeFindings(const Model &model) {
    Findings findings = poeControllerFindings(model);
    if (!findings.empty() && findings.front().severity == Severity::Good)
        addPoePorts(findings, model.poePorts);
    return findings;
}

Findings clockFindings(const Model &model) {
    if (!model.hasClock)
        return {};
    ChipTime chip;
    if (const int32_t status = readChipTime(chip); status != BSP_OK)
        return {unreadable("clock", status)};
    if (!chip.isValid())
        return {{"clock", Severity::Fault,
                 chip.isLost ? "has lost the time" : "holds no date and time",
                 "set it with 'iodbg clock set'; if it comes again, replace the battery"}};
    const int64_t drift = secondsBetween(systemTime(), chip.time);
    if (drift > kTolerableDrift || drift < -kTolerableDrift)
        return {{"clock", Severity::Warning,
                 calendarText(chip.time) + ", " + std::to_string(drift) + " s off the system clock",
                 "set the wrong one: 'iodbg clock set now' or 'iodbg clock sync'"}};
    return {good("clock", calendarText(chip.time))};
}

Findings flashFindings() {
    Findings findings = {bootFinding()};
    for (uint32_t bank = 0; bank < kBanks; ++bank)
        findings.push_back(bankFinding(bank));
    return findings;
}

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
