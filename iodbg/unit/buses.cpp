#include "iodbg/unit/buses.h"

#include "support/board_map.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace iodbg {

namespace {

constexpr Unit kOnSystemBus[] = {Unit::ProductRecord, Unit::Temperature, Unit::Clock};
constexpr Unit kBesideClock[] = {Unit::Temperature, Unit::Clock};
constexpr Unit kOnCageBus[] = {Unit::SfpPort};

/** A bus, or one of its channels, and what is read over it. */
struct Branch {
    uint32_t bus;
    std::optional<uint32_t> channel;
    std::span<const Unit> units;
};

constexpr Branch kBranches[] = {
    {bsp::kBoardEeprom.bus, {}, kOnSystemBus},
    {bsp::kClockChip.bus, bsp::kClockChip.channel, kBesideClock},
    {bsp::kUplinkModule.bus, {}, kOnCageBus},
};

bool isOn(const Branch &branch, const Finding &finding) {
    return std::find(branch.units.begin(), branch.units.end(), finding.subject.unit) !=
           branch.units.end();
}

bool isSilent(const Branch &branch, const Finding &finding) {
    return isOn(branch, finding) && finding.code == Code::NoAnswer;
}

/** Whether a finding is about a device that has answered. */
bool isAlive(const Findings &findings, const Branch &branch, const Finding &finding) {
    if (!isOn(branch, finding) || finding.code == Code::NotJudged ||
        finding.code == Code::Unreadable)
        return false;
    // What lines tell of a module says nothing of the bus.
    return std::none_of(findings.begin(), findings.end(), [&finding](const Finding &other) {
        return other.subject == finding.subject && other.code == Code::NoAnswer;
    });
}

/** What hung on a device hangs on its bus now. */
void moveCauses(Findings &findings, const Subject &device, const Subject &bus) {
    for (Finding &finding : findings) {
        if (finding.cause == device)
            finding = notJudged(finding.subject, bus);
    }
}

void blame(Findings &findings, const Branch &branch, size_t place) {
    const Subject bus = {Unit::I2cBus, branch.bus};
    size_t devices = 0;
    for (Finding &finding : findings) {
        if (!isSilent(branch, finding))
            continue;
        finding = notJudged(finding.subject, bus);
        moveCauses(findings, finding.subject, bus);
        ++devices;
    }
    const std::string channel =
        branch.channel ? "channel " + std::to_string(*branch.channel) + ": " : "";
    findings.insert(findings.begin() + static_cast<ptrdiff_t>(place),
                    {bus, Code::I2cBusNoAnswer,
                     channel + "none of " + std::to_string(devices) + " devices answers"});
}

} // namespace

void blameBuses(Findings &findings, size_t place) {
    constexpr ptrdiff_t kSeveral = 2;
    for (const Branch &branch : kBranches) {
        const auto silentDevices =
            std::count_if(findings.begin(), findings.end(),
                          [&branch](const Finding &finding) { return isSilent(branch, finding); });
        const bool hasAnswer =
            std::any_of(findings.begin(), findings.end(),
                        [&](const Finding &finding) { return isAlive(findings, branch, finding); });
        if (silentDevices >= kSeveral && !hasAnswer)
            blame(findings, branch, place);
    }
}

} // namespace iodbg
