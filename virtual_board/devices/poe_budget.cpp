#include "virtual_board/devices/poe_budget.h"

#include "virtual_board/devices/poe_kind.h"
#include "virtual_board/devices/poe_ports.h"

namespace vb {

namespace {

constexpr uint32_t kPriorities = kPoeHighestPriority + 1;

PoeBudget budgetOf(const PoeController &poe) {
    return poeKindOf(poe).budget(poe);
}

/** What a powered port is counted with. A port that is coming up may still draw all it wants. */
uint32_t charge(const PoeController &poe, uint32_t port) {
    const PoePort &state = poe.port[port];
    if (!poeIsPowered(state))
        return 0;
    const bool isMeasured = budgetOf(poe).countsDrawn && state.phase == PoePhase::Delivering;
    return isMeasured ? poeDrawn(poe, port) : poeWanted(poe, port);
}

uint32_t importance(const PoeController &poe, uint32_t port) {
    return budgetOf(poe).servesByPriority ? poeKindOf(poe).portRules(poe, port).priority : 0;
}

/** The port below an importance that loses power first; kPoePorts when none of them uses any. */
uint32_t leastImportant(const PoeController &poe, uint32_t below) {
    uint32_t found = kPoePorts;
    // Of equally important ports the last one loses.
    for (uint32_t port = 0; port < kPoePorts; ++port) {
        if (charge(poe, port) == 0 || importance(poe, port) >= below)
            continue;
        if (found == kPoePorts || importance(poe, port) <= importance(poe, found))
            found = port;
    }
    return found;
}

/** What ports below an importance are counted with together. */
uint32_t allocatedBelow(const PoeController &poe, uint32_t importanceLimit) {
    uint32_t sum = 0;
    for (uint32_t port = 0; port < kPoePorts; ++port) {
        if (importance(poe, port) < importanceLimit)
            sum += charge(poe, port);
    }
    return sum;
}

bool fits(const PoeController &poe, uint32_t more) {
    return poeAllocated(poe) + more <= poeAvailable(poe);
}

/** Takes power from less important ports where that is enough for a port; false when it is not. */
bool makeRoom(PoeController &poe, uint32_t port) {
    const uint32_t wanted = poeWanted(poe, port);
    const uint32_t below = importance(poe, port);
    const uint32_t kept = poeAllocated(poe) - allocatedBelow(poe, below);
    if (kept + wanted > poeAvailable(poe))
        return false;
    while (!fits(poe, wanted))
        poeDeny(poe, leastImportant(poe, below));
    return true;
}

} // namespace

uint32_t poeAvailable(const PoeController &poe) {
    const PoeBudget budget = budgetOf(poe);
    return budget.powerMw > budget.reserveMw ? budget.powerMw - budget.reserveMw : 0;
}

uint32_t poeAllocated(const PoeController &poe) {
    return allocatedBelow(poe, kPriorities);
}

void poeRequestPower(PoeController &poe, uint32_t port, uint64_t nowNs) {
    if (!budgetOf(poe).isKept || makeRoom(poe, port))
        poePowerUp(poe, port, nowNs);
    else
        poeDeny(poe, port);
}

void poeBalance(PoeController &poe, uint64_t nowNs) {
    while (budgetOf(poe).isKept && !fits(poe, 0))
        poeDeny(poe, leastImportant(poe, kPriorities));
    for (uint32_t rank = kPriorities; rank-- > 0;) {
        for (uint32_t port = 0; port < kPoePorts; ++port) {
            if (poe.port[port].phase == PoePhase::Denied && importance(poe, port) == rank)
                poeRequestPower(poe, port, nowNs);
        }
    }
}

} // namespace vb
