#include "iodbg/unit/watch_round.h"

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/climate.h"
#include "iodbg/chassis/clocks.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/chassis/health.h"
#include "iodbg/chassis/lamps.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/poe/health.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/health.h"
#include "iodbg/unit/buses.h"
#include "iodbg/unit/grounds.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace iodbg {

namespace {

/** What `iodbg check` says of the parts that are quick to read. */
Findings quickFindings(const Model &model, const WatchedParts &parts) {
    Findings all;
    const auto add = [&all, &parts](WatchedPart part, const auto &find) {
        if (!parts.has(part))
            return;
        Findings found = find();
        std::move(found.begin(), found.end(), std::back_inserter(all));
    };
    add(WatchedPart::Climate, [] { return temperatureFindings(); });
    add(WatchedPart::Fans, [&model] { return fanFindings(model); });
    add(WatchedPart::Supplies, [&model] { return supplyFindings(model); });
    add(WatchedPart::Poe, [&model] { return poeControllerFindings(model); });
    add(WatchedPart::Sfp, [&model] { return cageLineFindings(model); });
    add(WatchedPart::Clock, [&model] { return clockFindings(model); });
    blameBuses(all, 0);
    return all;
}

/** What somebody should know of. */
Findings withoutGood(const Findings &all) {
    Findings findings;
    std::copy_if(all.begin(), all.end(), std::back_inserter(findings), [](const Finding &finding) {
        return finding.severity() >= Severity::Warning || finding.cause.has_value();
    });
    return findings;
}

void addCageSummary(Report &report, const Model &model) {
    Section section = {"sfp", "SFP cages", {}};
    CageSummary summary;
    const int32_t status = readCages(model, summary);
    section.add("plugged", "Modules in",
                report.tried(section.path("plugged"), status, portsCell(summary.plugged)));
    if (status == BSP_OK) {
        section.add("rx_loss", "Loss of signal", portsCell(summary.lostSignal));
        section.add("tx_fault", "Transmitter fault", portsCell(summary.txFault));
    }
    report.parts.emplace_back(section);
}

void addParts(Report &report, const Model &model, const WatchedParts &parts, PoeTour &tour) {
    if (parts.has(WatchedPart::Climate)) {
        Section climate = {"climate", "Climate", {}};
        addItems(report, climate, kClimateItems);
        report.parts.emplace_back(climate);
    }
    if (parts.has(WatchedPart::Fans))
        report.parts.emplace_back(fanTable(report, model));
    if (parts.has(WatchedPart::Supplies))
        report.parts.emplace_back(supplyTable(report, model));
    if (parts.has(WatchedPart::Poe) && model.poePorts > 0)
        tour.add(report, model.poePorts);
    if (parts.has(WatchedPart::Sfp) && !model.cages.empty())
        addCageSummary(report, model);
    if (parts.has(WatchedPart::Clock) && model.hasClock)
        addClocks(report);
    if (parts.has(WatchedPart::Panel))
        addPanelLamps(report);
}

} // namespace

Round lookAround(const WatchedParts &parts, PoeTour &tour) {
    Round round;
    round.time = calendarText(systemTime());
    round.report.event = "round";
    const Grounds grounds = judgeGrounds();
    constexpr Unit kNeeded[] = {Unit::KernelModule, Unit::Cpld, Unit::Model};
    round.isAsked = grounds.modelStatus.has_value();
    round.findings = withoutGood(grounds.causeAmong(kNeeded) ? grounds.findings
                                                             : quickFindings(grounds.model, parts));
    if (grounds.modelStatus != BSP_OK) {
        Section section = {"model", "Model", {}};
        // Where nothing could be asked the findings say why.
        section.add("device_id", "Device id",
                    grounds.modelStatus
                        ? round.report.tried(section.path("device_id"), *grounds.modelStatus, {},
                                             round.findings.front().toDo())
                        : Cell{"not asked", nullptr});
        round.report.parts.emplace_back(section);
        return round;
    }
    addParts(round.report, grounds.model, parts, tour);
    return round;
}

} // namespace iodbg
