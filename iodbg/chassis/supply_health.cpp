#include "iodbg/chassis/health.h"

#include "bsp.h"
#include "iodbg/chassis/supplies.h"

#include <algorithm>

namespace iodbg {

namespace {

Finding faultyLines(const Subject &supply, int32_t code) {
    return {supply, Code::SupplyFault, "its lines tell status " + std::to_string(code)};
}

/**
 * Its presence line is a pair of fans' as well, so that its status lines alone are its own. They
 * are clear of a supply that works, and do not tell a missing one from a failed one.
 */
Finding sharedLineFinding(const Subject &subject, bool isPlugged, int32_t code) {
    if (code == 0)
        return good(subject, "status 0");
    if (isPlugged)
        return faultyLines(subject, code);
    return {subject, Code::SupplyAbsentOrFailed,
            "status " + std::to_string(code) + ": not plugged, or it has failed"};
}

Finding supplyFinding(const Model &model, int32_t supply) {
    const Subject subject = {Unit::Supply, static_cast<uint32_t>(supply)};
    const bool isLineShared = model.fanPresence == FanPresence::SuppliesLine;
    bool isPlugged = false;
    if (const int32_t status = readPlugged(model, supply, isPlugged); status != BSP_OK)
        return unreadable(subject, status);
    if (!isPlugged && !isLineShared)
        return {subject, Code::SupplyNotPlugged, "not plugged"};
    int32_t code = 0;
    if (const int32_t status = ioPowerStatusGet(supply, &code); status != BSP_OK)
        return unreadable(subject, status);
    if (isLineShared)
        return sharedLineFinding(subject, isPlugged, code);
    return code == 0 ? good(subject, "plugged, status 0") : faultyLines(subject, code);
}

/** The record of models without supply lines names their supplies. */
Finding uncounted(const Model &model, int32_t count, int32_t status) {
    const Subject supplies = {Unit::Supply};
    if (count > BSP_SUPPLIES_MAX)
        return {supplies, Code::RecordDamaged,
                "the product record names " + std::to_string(count) + " supplies"};
    return model.hasSupplyLines ? unreadable(supplies, status)
                                : notJudged(supplies, {Unit::ProductRecord});
}

} // namespace

Findings supplyFindings(const Model &model) {
    int32_t count = 0;
    if (const int32_t status = ioPowerNumGet(&count); status != BSP_OK)
        return {uncounted(model, count, status)};
    Findings findings;
    for (int32_t supply = 1; supply <= std::min(count, BSP_FIXED_SUPPLIES); ++supply)
        findings.push_back(supplyFinding(model, supply));
    // One register has the lines of both.
    if (findings.size() > 1 && findings[0].code == Code::Unreadable &&
        findings[1].code == Code::Unreadable)
        findings = {{{Unit::Supply}, Code::Unreadable, findings[0].text}};
    if (model.fanPresence == FanPresence::SuppliesLine)
        findings.insert(findings.begin(),
                        {{Unit::PresenceLines},
                         Code::LinesShared,
                         "one is that of fans 1-2 and of supply 1, one of fans 3-4 and of "
                         "supply 2: they tell of neither for sure"});
    return findings;
}

} // namespace iodbg
