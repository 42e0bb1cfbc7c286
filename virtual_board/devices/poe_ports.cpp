#include "virtual_board/devices/poe_ports.h"

#include "virtual_board/devices/poe_budget.h"
#include "virtual_board/devices/poe_kind.h"

#include <algorithm>

namespace vb {

namespace {

/** What a class entitles a device to, in milliwatts. */
constexpr uint32_t kClassPower[kPoeHighestClass + 1] = {15400, 4000,  7000,  15400, 30000,
                                                        45000, 60000, 75000, 90000};

PoePortRules rulesOf(const PoeController &poe, uint32_t port) {
    return poeKindOf(poe).portRules(poe, port);
}

bool isInService(const PoeController &poe, uint32_t port) {
    return poe.mode == PoeMode::Application && rulesOf(poe, port).isInService;
}

void enter(PoePort &port, PoePhase phase, uint64_t dueNs = kPoeNever) {
    port.phase = phase;
    port.dueNs = dueNs;
    if (phase != PoePhase::Delivering)
        port.heldCentivolts = 0;
}

void noteEvent(PoePort &port, uint8_t PoeCounts::*count) {
    port.hasEvent = 1;
    if (port.counts.*count != UINT8_MAX)
        ++(port.counts.*count);
}

/** Looks for a device, up to a goal. */
void search(PoePort &port, PoeGoal goal, uint64_t nowNs) {
    port.goal = goal;
    if (goal == PoeGoal::Nothing)
        enter(port, PoePhase::Idle);
    else
        enter(port, PoePhase::Detecting, nowNs + kPoeDetectionNs);
}

void switchOff(PoePort &port) {
    port.detection = kPoeDetectedNothing;
    port.powerClass = kPoeNotClassified;
    port.fault = 0;
    port.goal = PoeGoal::Nothing;
    enter(port, PoePhase::Disabled);
}

void fail(PoePort &port, uint8_t fault) {
    port.fault = fault;
    noteEvent(port, fault == kPoeFaultShort ? &PoeCounts::shorts : &PoeCounts::overCurrent);
    enter(port, PoePhase::Fault);
}

PoeSignature signatureAt(const PoweredDevice &device) {
    return device.isPlugged != 0 ? device.signature : PoeSignature::Open;
}

uint8_t detectionOf(PoeSignature signature) {
    switch (signature) {
    case PoeSignature::Good:
        return kPoeDetectedGood;
    case PoeSignature::Bad:
        return kPoeDetectedBad;
    case PoeSignature::Legacy:
        return kPoeDetectedLegacy;
    case PoeSignature::Short:
        return kPoeDetectedShort;
    case PoeSignature::Open:
        break;
    }
    return kPoeDetectedOpen;
}

/** Why power has to be cut; 0 when all is well. */
uint8_t troubleAt(const PoeController &poe, uint32_t port) {
    const PoweredDevice &device = poe.device[port];
    if (device.isPlugged == 0)
        return 0;
    if (device.signature == PoeSignature::Short)
        return kPoeFaultShort;
    const bool isOverloaded = device.isOverCurrent != 0 || device.drawnMw > poePortLimit(poe, port);
    return isOverloaded ? kPoeFaultOverCurrent : 0;
}

/** When a delivering port will see that its device is gone or draws too much. */
void watch(PoeController &poe, uint32_t port, uint64_t nowNs) {
    const bool isNoticed = rulesOf(poe, port).noticesDisconnect;
    uint64_t dueNs = kPoeNever;
    if (troubleAt(poe, port) != 0)
        dueNs = nowNs + kPoeOverloadNs;
    else if (poe.device[port].isPlugged == 0 && isNoticed)
        dueNs = nowNs + kPoeDisconnectNs;
    enter(poe.port[port], PoePhase::Delivering, dueNs);
}

// The ends of the phases

void endDetection(PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoePort &state = poe.port[port];
    const PoeSignature signature = signatureAt(poe.device[port]);
    const bool isLegacy = signature == PoeSignature::Legacy && rulesOf(poe, port).powersLegacy;
    state.detection = detectionOf(signature);
    state.powerClass = kPoeNotClassified;
    if (signature == PoeSignature::Bad)
        noteEvent(state, &PoeCounts::badSignatures);
    if (signature == PoeSignature::Short)
        return fail(state, kPoeFaultShort);
    if (signature != PoeSignature::Good && !isLegacy)
        return enter(state, PoePhase::Idle);
    if (state.goal == PoeGoal::Detect)
        return enter(state, PoePhase::Held);
    enter(state, PoePhase::Classifying, nowNs + kPoeClassificationNs);
}

void endClassification(PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoePort &state = poe.port[port];
    // A legacy device does not know of classes and counts as class 0.
    state.powerClass =
        poe.device[port].signature == PoeSignature::Legacy ? 0 : poe.device[port].powerClass;
    if (state.goal == PoeGoal::Power)
        poeRequestPower(poe, port, nowNs);
    else
        enter(state, PoePhase::Held);
}

void endPowerUp(PoeController &poe, uint32_t port, uint64_t nowNs) {
    if (const uint8_t trouble = troubleAt(poe, port); trouble != 0)
        fail(poe.port[port], trouble);
    else
        watch(poe, port, nowNs);
    poe.port[port].hasEvent = 1;
    poeBalance(poe, nowNs);
}

void endDelivery(PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoePort &state = poe.port[port];
    if (const uint8_t trouble = troubleAt(poe, port); trouble != 0) {
        fail(state, trouble);
    } else if (poe.device[port].isPlugged == 0) {
        noteEvent(state, &PoeCounts::disconnects);
        search(state, rulesOf(poe, port).goal, nowNs);
    } else {
        return watch(poe, port, nowNs);
    }
    poeBalance(poe, nowNs);
}

void endPhase(PoeController &poe, uint32_t port, uint64_t nowNs) {
    switch (poe.port[port].phase) {
    case PoePhase::Detecting:
        return endDetection(poe, port, nowNs);
    case PoePhase::Classifying:
        return endClassification(poe, port, nowNs);
    case PoePhase::PoweringUp:
        return endPowerUp(poe, port, nowNs);
    case PoePhase::Delivering:
        return endDelivery(poe, port, nowNs);
    default:
        poe.port[port].dueNs = kPoeNever;
    }
}

} // namespace

void poeAdvance(PoeController &poe, uint64_t nowNs) {
    // In the order of time over all ports, because they compete for power.
    for (;;) {
        const PoePort *first =
            std::min_element(poe.port, poe.port + kPoePorts,
                             [](const PoePort &a, const PoePort &b) { return a.dueNs < b.dueNs; });
        if (first->dueNs > nowNs || first->dueNs == kPoeNever)
            return;
        endPhase(poe, static_cast<uint32_t>(first - poe.port), first->dueNs);
    }
}

uint32_t poePortLimit(const PoeController &poe, uint32_t port) {
    const PoePortRules rules = rulesOf(poe, port);
    if (rules.isLimitFixed)
        return rules.limitMw;
    const uint8_t powerClass = poe.port[port].powerClass;
    return kClassPower[powerClass <= kPoeHighestClass ? powerClass : 0];
}

uint32_t poeDrawn(const PoeController &poe, uint32_t port) {
    const PoweredDevice &device = poe.device[port];
    const bool isDrawing = poe.port[port].phase == PoePhase::Delivering && device.isPlugged != 0;
    return isDrawing ? device.drawnMw : 0;
}

uint32_t poeWanted(const PoeController &poe, uint32_t port) {
    const PoweredDevice &device = poe.device[port];
    return std::min(std::max(device.requestedMw, device.drawnMw), poePortLimit(poe, port));
}

void poePowerUp(PoeController &poe, uint32_t port, uint64_t nowNs) {
    enter(poe.port[port], PoePhase::PoweringUp, nowNs + kPoePowerUpNs);
}

void poeDeny(PoeController &poe, uint32_t port) {
    if (poe.port[port].phase != PoePhase::Denied)
        noteEvent(poe.port[port], &PoeCounts::denials);
    enter(poe.port[port], PoePhase::Denied);
}

void poeSetDevice(PoeController &poe, uint32_t port, const PoweredDevice &device, uint64_t nowNs) {
    poeAdvance(poe, nowNs);
    poe.device[port] = device;
    PoePort &state = poe.port[port];
    state.heldCentivolts = 0;
    const bool isLooking =
        state.phase == PoePhase::Detecting || state.phase == PoePhase::Classifying;
    if (state.phase == PoePhase::Delivering)
        watch(poe, port, nowNs);
    else if (state.phase != PoePhase::Disabled && state.phase != PoePhase::PoweringUp)
        search(state, isLooking ? state.goal : rulesOf(poe, port).goal, nowNs);
    poeBalance(poe, nowNs);
}

void poeRefreshPort(PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoePort &state = poe.port[port];
    const PoeGoal goal = rulesOf(poe, port).goal;
    const bool isShortOfGoal =
        !poeIsPowered(state) && state.phase != PoePhase::Denied && state.goal < goal;
    if (!isInService(poe, port))
        switchOff(state);
    else if (state.phase == PoePhase::Held && goal == PoeGoal::Power)
        poeRequestPower(poe, port, nowNs);
    else if (state.phase == PoePhase::Delivering)
        watch(poe, port, nowNs);
    else if (state.phase == PoePhase::Disabled || isShortOfGoal)
        search(state, goal, nowNs);
    poeBalance(poe, nowNs);
}

void poeRefreshPorts(PoeController &poe, uint64_t nowNs) {
    for (uint32_t port = 0; port < kPoePorts; ++port)
        poeRefreshPort(poe, port, nowNs);
}

void poeRestartPort(PoeController &poe, uint32_t port, uint64_t nowNs) {
    switchOff(poe.port[port]);
    poeRefreshPort(poe, port, nowNs);
}

bool poeTrigger(PoeController &poe, uint32_t port, PoeGoal goal, uint64_t nowNs) {
    PoePort &state = poe.port[port];
    if (!isInService(poe, port))
        return false;
    if (!poeIsPowered(state))
        search(state, std::max(goal, rulesOf(poe, port).goal), nowNs);
    return true;
}

void poeRelease(PoeController &poe, uint32_t port, uint64_t nowNs) {
    if (poe.port[port].phase == PoePhase::Disabled)
        return;
    search(poe.port[port], PoeGoal::Nothing, nowNs);
    poeBalance(poe, nowNs);
}

void poeResetPorts(PoeController &poe) {
    for (PoePort &port : poe.port) {
        port = PoePort{};
        switchOff(port);
    }
}

} // namespace vb
