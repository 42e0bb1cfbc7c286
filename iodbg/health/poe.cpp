#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/report.h"

namespace iodbg {

namespace {

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

} // namespace

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

} // namespace iodbg
