#include "iodbg/unit/health.h"

#include "iodbg/chassis/health.h"
#include "iodbg/flash/health.h"
#include "iodbg/identity/health.h"
#include "iodbg/transceivers/health.h"
#include "iodbg/unit/buses.h"
#include "iodbg/unit/grounds.h"

#include <iterator>
#include <span>
#include <utility>

namespace iodbg {

namespace {

struct Part {
    std::span<const Unit> needs;
    std::span<const Unit> units; // that are not judged without
    Findings (*judge)(const Model &model, const PoePortFaults &known);
};

constexpr Unit kNeedsModule[] = {Unit::KernelModule};
constexpr Unit kNeedsModel[] = {Unit::KernelModule, Unit::Model};
constexpr Unit kNeedsLines[] = {Unit::KernelModule, Unit::Cpld, Unit::Model};

constexpr Unit kIdentityUnits[] = {Unit::ProductRecord, Unit::SerialNumber, Unit::MacAddress};
constexpr Unit kTemperatureUnits[] = {Unit::Temperature};
constexpr Unit kFanUnits[] = {Unit::Fan};
constexpr Unit kSupplyUnits[] = {Unit::Supply};
constexpr Unit kPoeUnits[] = {Unit::PoeController};
constexpr Unit kClockUnits[] = {Unit::Clock};
constexpr Unit kCageUnits[] = {Unit::SfpPort};

template <Findings (*Judge)()>
Findings judgeAny(const Model &, const PoePortFaults &) {
    return Judge();
}

template <Findings (*Judge)(const Model &)>
Findings judgeModel(const Model &model, const PoePortFaults &) {
    return Judge(model);
}

constexpr Part kParts[] = {
    {kNeedsModule, kIdentityUnits, judgeAny<identityFindings>},
    {kNeedsModule, kTemperatureUnits, judgeAny<temperatureFindings>},
    {kNeedsLines, kFanUnits, judgeModel<fanFindings>},
    {kNeedsLines, kSupplyUnits, judgeModel<supplyFindings>},
    {kNeedsLines, kPoeUnits, poeFindings},
    {kNeedsModel, kClockUnits, judgeModel<clockFindings>},
    {{}, {}, judgeAny<flashFindings>},
    {kNeedsLines, kCageUnits, judgeModel<transceiverFindings>},
};

Findings findingsOn(const Part &part, const Grounds &grounds, const PoePortFaults &known) {
    const std::optional<Subject> cause = grounds.causeAmong(part.needs);
    if (!cause)
        return part.judge(grounds.model, known);
    Findings findings;
    for (const Unit unit : part.units)
        findings.push_back(notJudged({unit}, *cause));
    return findings;
}

} // namespace

Findings unitFindings(const PoePortFaults &known) {
    const Grounds grounds = judgeGrounds();
    Findings all = grounds.findings;
    for (const Part &part : kParts) {
        Findings found = findingsOn(part, grounds, known);
        std::move(found.begin(), found.end(), std::back_inserter(all));
    }
    blameBuses(all, grounds.findings.size());
    return all;
}

} // namespace iodbg
