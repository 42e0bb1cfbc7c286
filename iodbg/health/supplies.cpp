#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/supplies.h"

#include <algorithm>

namespace iodbg {

namespace {

Finding supplyFinding(const Model &model, int32_t supply) {
    const std::string name = "supply " + std::to_string(supply);
    bool isPlugged = false;
    if (const int32_t status = readPlugged(model, supply, isPlugged); status != BSP_OK)
        return unreadable(name, status);
    if (!isPlugged)
        return {name, Severity::Warning, "not plugged", "plug it, or live without a spare one"};
    int32_t code = 0;
    if (const int32_t status = ioPowerStatusGet(supply, &code); status != BSP_OK)
        return unreadable(name, status);
    if (code != 0)
        return {name, Severity::Fault, "its lines tell status " + std::to_string(code),
                "check its cable and its own lamp; replace it"};
    return good(name, "plugged, status 0");
}

} // namespace

Findings supplyFindings(const Model &model) {
    int32_t count = 0;
    if (const int32_t status = ioPowerNumGet(&count); status != BSP_OK)
        return {unreadable("supplies", status)};
    Findings findings;
    for (int32_t supply = 1; supply <= std::min(count, BSP_FIXED_SUPPLIES); ++supply)
        findings.push_back(supplyFinding(model, supply));
    return findings;
}

} // namespace iodbg
