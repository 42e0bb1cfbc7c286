#include "iodbg/unit/metrics_readings.h"

#include "bsp.h"
#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/clocks.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/chassis/thresholds.h"
#include "iodbg/chassis/watchdog.h"
#include "iodbg/core/status_table.h"
#include "iodbg/flash/partition_list.h"
#include "iodbg/identity/items.h"
#include "iodbg/identity/record.h"
#include "iodbg/poe/controller.h"
#include "iodbg/poe/guide.h"
#include "iodbg/poe/port.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/measurements.h"
#include "iodbg/unit/grounds.h"
#include "iodbg/unit/health.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace iodbg {

namespace {

using Clock = std::chrono::steady_clock;

Cell indexCell(const Subject &subject) {
    return subject.index ? numberCell(*subject.index) : Cell{"", nullptr};
}

void addCounts(Report &report, const Findings &findings) {
    Table table = {"counts", {{"severity", ""}, {"count", ""}}, {}};
    for (const Severity severity :
         {Severity::Good, Severity::NotJudged, Severity::Warning, Severity::Fault})
        table.rows.push_back(
            {textCell(severityKey(severity)), numberCell(countOf(findings, severity))});
    report.parts.emplace_back(table);
}

/** Several findings of one code about one part are one row. */
void addFound(Report &report, const Findings &findings) {
    Table table = {
        "found", {{"code", ""}, {"severity", ""}, {"unit", ""}, {"index", ""}, {"count", ""}}, {}};
    std::map<std::tuple<Code, Unit, std::optional<uint32_t>>, int64_t> counts;
    for (const Finding &finding : findings)
        ++counts[{finding.code, finding.subject.unit, finding.subject.index}];
    for (const auto &[what, count] : counts) {
        const auto &[code, unit, index] = what;
        const Subject subject = {unit, index};
        if (rowOf(code).severity != Severity::Good)
            table.rows.push_back({textCell(rowOf(code).key),
                                  textCell(severityKey(rowOf(code).severity)),
                                  textCell(subject.key()), indexCell(subject), numberCell(count)});
    }
    report.parts.emplace_back(table);
}

/** The worst of what was found of each part. */
void addVerdicts(Report &report, const Findings &findings) {
    Table table = {"verdicts", {{"unit", ""}, {"index", ""}, {"verdict", ""}}, {}};
    std::map<std::tuple<Unit, std::optional<uint32_t>>, Severity> worst;
    for (const Finding &finding : findings) {
        Severity &severity = worst[{finding.subject.unit, finding.subject.index}];
        severity = std::max(severity, finding.severity());
    }
    for (const auto &[what, severity] : worst) {
        const Subject subject = {std::get<0>(what), std::get<1>(what)};
        table.rows.push_back({textCell(subject.key()), indexCell(subject),
                              numberCell(static_cast<int64_t>(severity))});
    }
    report.parts.emplace_back(table);
}

void addLimits(Report &report) {
    Table table = {"limits", {{"code", ""}, {"celsius", ""}}, {}};
    for (const Threshold &threshold : kThresholds) {
        if (std::string(threshold.unit) == "C")
            table.rows.push_back(
                {textCell(rowOf(threshold.code).key), numberCell(threshold.value)});
    }
    report.parts.emplace_back(table);
}

/** "1.1.0" */
std::string versionText(uint32_t number) {
    return std::to_string(number >> 16) + "." + std::to_string(number >> 8 & 0xFF) + "." +
           std::to_string(number & 0xFF);
}

void addSoftware(Report &report) {
    Section section = {"software", "", {}};
    section.add("iodbg", "", textCell(IODBG_VERSION));
    section.add("library", "", textCell(versionText(bspLibraryVersion())));
    report.parts.emplace_back(section);
}

void addIdentity(Report &report) {
    Section section = {"board", "", {}};
    for (const auto &items : {kVersionItems, kSerialItems, kMacItems})
        addItems(report, section, items);
    report.parts.emplace_back(section);
}

void addRecordVerdict(Report &report) {
    Section section = {"record", "", {}};
    BspDevinfo record;
    if (const int32_t status = readRecord(Carrier{}, record); status == BSP_OK)
        addVerdict(section, judge(record));
    else
        report.tried(section.key, status, {});
    report.parts.emplace_back(section);
}

void addAllSupplies(Report &report, const Model &model) {
    int32_t count = 0;
    if (ioPowerNumGet(&count) != BSP_OK || count > BSP_SUPPLIES_MAX)
        count = BSP_FIXED_SUPPLIES;
    for (int32_t supply = 1; supply <= count; ++supply) {
        Section section = {"supply" + std::to_string(supply), "", {}};
        addSupply(report, section, model, static_cast<uint32_t>(supply), Readings::All);
        report.parts.emplace_back(section);
    }
}

void addPoePorts(Report &report, const Model &model) {
    Table table = {"ports", {{"port", ""}}, {}};
    for (const PoePortItem &item : poePortItems())
        table.columns.push_back({item.key, ""});
    for (uint32_t port = 1; port <= model.poePorts; ++port) {
        std::vector<Cell> row = readPoePort(report, poeGuide(model.poeChip), port);
        row.insert(row.begin(), numberCell(port));
        table.rows.push_back(row);
    }
    report.parts.emplace_back(table);
}

void addAllCages(Report &report, const Model &model) {
    const Table cages = cageTable(report, model, model.cages);
    std::vector<uint32_t> plugged;
    for (size_t i = 0; i < cages.rows.size(); ++i) {
        if (cages.rows[i][1].value == Value{true})
            plugged.push_back(model.cages[i]);
    }
    report.parts.emplace_back(cages);
    addModuleMeasurements(report, plugged);
}

bool isGood(const Findings &findings, Unit unit) {
    return std::any_of(findings.begin(), findings.end(), [unit](const Finding &finding) {
        return finding.subject.unit == unit && finding.severity() == Severity::Good;
    });
}

/** What is there whatever the model is. A CPLD that does not answer reads as all ones. */
void addAnyModels(Report &report, bool hasCpld) {
    addRecordVerdict(report);
    Section climate = {"climate", "", {}};
    if (hasCpld) {
        addItems(report, climate, kClimateItems);
    } else {
        for (const Temperature &temperature : kTemperatures)
            addItems(report, climate, {&temperature.item, 1});
    }
    report.parts.emplace_back(climate);
    if (hasCpld)
        addWatchdog(report);
}

/** A port of a controller that is not well is not asked: each would be waited for. */
void addModels(Report &report, const Model &model, const Findings &findings) {
    addIdentity(report);
    report.parts.emplace_back(fanTable(report, model));
    if (model.hasClock)
        addClocks(report);
    addAllSupplies(report, model);
    if (model.poePorts > 0)
        addPoeController(report);
    if (isGood(findings, Unit::PoeController))
        addPoePorts(report, model);
    addAllCages(report, model);
}

void addFailures(Report &report) {
    Table table = {"failures", {{"item", ""}, {"status", ""}, {"name", ""}}, {}};
    for (const FailedItem &failed : report.failures)
        table.rows.push_back({textCell(failed.item), numberCell(failed.status),
                              textCell(explain(failed.status).name)});
    report.parts.emplace_back(table);
}

} // namespace

Report takeReadings() {
    const Clock::time_point start = Clock::now();
    constexpr Unit kModule[] = {Unit::KernelModule};
    constexpr Unit kCpld[] = {Unit::Cpld};
    Report report;
    const Grounds grounds = judgeGrounds();
    const Findings findings = unitFindings();
    addSoftware(report);
    addCounts(report, findings);
    addFound(report, findings);
    addVerdicts(report, findings);
    addLimits(report);
    if (!grounds.causeAmong(kModule))
        addAnyModels(report, !grounds.causeAmong(kCpld));
    // Without an answer of the CPLD nothing that asks for the model is called: the library would
    // remember what it reads.
    if (grounds.modelStatus == BSP_OK)
        addModels(report, grounds.model, findings);
    addPartitions(report);
    addFailures(report);
    Section section = {"readings", "", {}};
    section.add("failed", "", numberCell(static_cast<int64_t>(report.failures.size())));
    section.add(
        "duration_ms", "",
        numberCell(
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count()));
    report.parts.emplace_back(section);
    return report;
}

} // namespace iodbg
