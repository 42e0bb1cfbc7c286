#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/report.h"

namespace iodbg {

namespace {

void addPoePorts(Findings &findings, uint32_t ports) {
    std::vector<int64_t> faulty;
    for (uint32_t port = 1; port <= ports; ++port) {
        uint32_t fault = 0;
        if (const int32_t status = ioPoePortFaultGet(port, &fault); status != BSP_OK) {
            findings.push_back(unreadable("PoE port " + std::to_string(port), status));
            return;
        }
        if (fault == BSP_POE_FAULT)
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
    constexpr uint32_t kNoAnswer = 2;
    constexpr char kName[] = "PoE controller";
    if (model.poePorts == 0)
        return {};
    uint32_t presence = BSP_POE_CONTROLLER_PRESENT;
    if (const int32_t status = bspPoeOnlineGet(&presence); status != BSP_OK)
        return {unreadable(kName, status)};
    if (presence != BSP_POE_CONTROLLER_PRESENT)
        return {{kName, Severity::Fault, "missing", "check its card"}};
    uint32_t firmware = BSP_POE_APP_USABLE;
    if (ioPoeAppStatusGet(&firmware) == BSP_OK && firmware == BSP_POE_APP_UPGRADE_FAILED)
        return {
            {kName, Severity::Fault, "its last upgrade failed", "run 'iodbg poe upgrade FILE'"}};
    uint32_t isInitialised = kNoAnswer; // which it stays without being a failure
    if (const int32_t status = ioPoeInitStatusGet(&isInitialised); status != BSP_OK)
        return {unreadable(kName, status)};
    if (isInitialised == kNoAnswer)
        return {{kName, Severity::Fault, "does not answer",
                 "try again in a few seconds; if it stays so, write its firmware anew with 'iodbg "
                 "poe upgrade FILE'"}};
    if (isInitialised != BSP_POE_INITIALISED)
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
