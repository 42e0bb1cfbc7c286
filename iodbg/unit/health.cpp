#include "iodbg/unit/health.h"

#include "iodbg/chassis/health.h"
#include "iodbg/flash/health.h"
#include "iodbg/identity/health.h"
#include "iodbg/poe/health.h"
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
    Findings (*judge)(const Model &model);
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
Findings judgeAny(const Model &) {
    return Judge();
}

constexpr Part kParts[] = {
    {kNeedsModule, kIdentityUnits, judgeAny<identityFindings>},
    {kNeedsModule, kTemperatureUnits, judgeAny<temperatureFindings>},
    {kNeedsLines, kFanUnits, fanFindings},
    {kNeedsLines, kSupplyUnits, supplyFindings},
    {kNeedsLines, kPoeUnits, poeFindings},
    {kNeedsModel, kClockUnits, clockFindings},
    {{}, {}, judgeAny<flashFindings>},
    {kNeedsLines, kCageUnits, transceiverFindings},
};

Findings findingsOn(const Part &part, const Grounds &grounds) {
    const std::optional<Subject> cause = grounds.causeAmong(part.needs);
    if (!cause)
        return part.judge(grounds.model);
    Findings findings;
    for (const Unit unit : part.units)
        findings.push_back(notJudged({unit}, *cause));
    return findings;
}

} // namespace

Findings unitFindings() {
    const Grounds grounds = judgeGrounds();
    Findings all = grounds.findings;
    for (const Part &part : kParts) {
        Findings found = findingsOn(part, grounds);
        std::move(found.begin(), found.end(), std::back_inserter(all));
    }
    blameBuses(all, grounds.findings.size());
    return all;
}

} // namespace iodbg
