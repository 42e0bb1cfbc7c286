#include "iodbg/poe/health.h"

#include "bsp.h"
#include "iodbg/core/status_table.h"
#include "support/board_map.h"

#include <array>
#include <string>

namespace iodbg {

namespace {

constexpr Subject kControllerSubject = {Unit::PoeController};

/** fault: whether the port has one. */
int32_t readPortFault(const PoePortFaults &known, uint32_t port, bool &fault) {
    if (const auto found = known.find(port); found != known.end()) {
        fault = found->second;
        return BSP_OK;
    }
    uint32_t answer = BSP_POE_FAULT_NONE;
    const int32_t status = ioPoePortFaultGet(port, &answer);
    fault = answer == BSP_POE_FAULT;
    return status;
}

void addPorts(Findings &findings, uint32_t ports, const PoePortFaults &known) {
    const size_t before = findings.size();
    for (uint32_t port = 1; port <= ports; ++port) {
        bool isFaulty = false;
        if (const int32_t status = readPortFault(known, port, isFaulty); status != BSP_OK) {
            findings.push_back(unreadable({Unit::PoePort, port}, status));
            if (port < ports)
                findings.push_back(notJudged({Unit::PoePort}, {Unit::PoePort, port}));
            return;
        }
        if (isFaulty)
            findings.push_back({{Unit::PoePort, port}, Code::PoePortFault, "has a fault"});
    }
    if (findings.size() == before)
        findings.push_back(good({Unit::PoePort}, "none has a fault"));
}

/** A question whose status tells whether a controller takes requests at all. */
int32_t askVersion() {
    std::array<char, 32> version{};
    return ioPoeAppVersionGet(version.data());
}

/**
 * A request that nobody takes is the bus's matter, or the controller is without power or in reset:
 * no firmware can be sent to it either.
 */
Finding busFinding(const std::string &more = "") {
    return {kControllerSubject, Code::PoeBusNoAnswer,
            "its bus, I2C " + std::to_string(bsp::kPoeController.bus) + ", takes no request" +
                more};
}

Finding silenceFinding() {
    const int32_t status = askVersion();
    if (status == BSP_E_POE_WRITE)
        return busFinding();
    if (status == BSP_OK)
        return {kControllerSubject, Code::PoeNoAnswer, "answers now and then only"};
    // Bytes come over the bus from a controller that says nothing as well.
    const std::string answers =
        status == BSP_E_POE_FRAME ? "its answers are missing or wrong" : "gives no answer";
    return {kControllerSubject, Code::PoeNoAnswer,
            "takes requests, " + answers + ": " + nameAndNumber(status)};
}

} // namespace

Findings poeControllerFindings(const Model &model) {
    constexpr uint32_t kNoAnswer = 2;
    if (model.poePorts == 0)
        return {};
    uint32_t presence = BSP_POE_CONTROLLER_PRESENT;
    if (const int32_t status = bspPoeOnlineGet(&presence); status != BSP_OK)
        return {unreadable(kControllerSubject, status)};
    if (presence != BSP_POE_CONTROLLER_PRESENT)
        return {{kControllerSubject, Code::PoeMissing, "missing"}};
    uint32_t firmware = 0;
    if (ioPoeAppStatusGet(&firmware) == BSP_OK && firmware == BSP_POE_APP_UPGRADE_FAILED) {
        if (askVersion() == BSP_E_POE_WRITE)
            return {busFinding("; its last upgrade failed")};
        return {{kControllerSubject, Code::PoeUpgradeFailed, "its last upgrade failed"}};
    }
    uint32_t isInitialised = kNoAnswer; // which it stays without being a failure
    if (const int32_t status = ioPoeInitStatusGet(&isInitialised); status != BSP_OK)
        return {unreadable(kControllerSubject, status)};
    if (isInitialised == kNoAnswer)
        return {silenceFinding()};
    if (isInitialised != BSP_POE_INITIALISED)
        return {{kControllerSubject, Code::PoeNotInitialised, "not initialised"}};
    return {good(kControllerSubject, "initialised")};
}

Findings poeFindings(const Model &model, const PoePortFaults &known) {
    Findings findings = poeControllerFindings(model);
    if (findings.empty())
        return findings;
    if (findings.front().severity() == Severity::Good)
        addPorts(findings, model.poePorts, known);
    else
        findings.push_back(notJudged({Unit::PoePort}, kControllerSubject));
    return findings;
}

} // namespace iodbg
