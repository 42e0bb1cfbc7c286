// The whole unit, part by part.

#include "iodbg/health.h"

#include <iterator>
#include <utility>

namespace iodbg {

namespace {

struct Part {
    std::span<const Unit> needs;
    std::span<const Unit> units; // that are not judged without
    Findings (*judge)(const Model &model);
};

constexpr Unit kModule[] = {Unit::KernelModule};
constexpr Unit kModuleAndModel[] = {Unit::KernelModule, Unit::Model};
constexpr Unit kModelAndLines[] = {Unit::KernelModule, Unit::Cpld, Unit::Model};

constexpr Unit kIdentity[] = {Unit::ProductRecord, Unit::SerialNumber, Unit::MacAddress};
constexpr Unit kTemperature[] = {Unit::Temperature};
constexpr Unit kFans[] = {Unit::Fan};
constexpr Unit kSupplies[] = {Unit::Supply};
constexpr Unit kPoe[] = {Unit::PoeController};
constexpr Unit kClock[] = {Unit::Clock};
constexpr Unit kCages[] = {Unit::SfpPort};

template <Findings (*Judge)()>
Findings judgeAny(const Model &) {
    return Judge();
}

constexpr Part kParts[] = {
    {kModule, kIdentity, judgeAny<identityFindings>},
    {kModule, kTemperature, judgeAny<temperatureFindings>},
    {kModelAndLines, kFans, fanFindings},
    {kModelAndLines, kSupplies, supplyFindings},
    {kModelAndLines, kPoe, poeFindings},
    {kModuleAndModel, kClock, clockFindings},
    {{}, {}, judgeAny<flashFindings>},
    {kModelAndLines, kCages, transceiverFindings},
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
