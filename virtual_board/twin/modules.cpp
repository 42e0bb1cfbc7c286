// SFP modules of a twin.

#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/devices/sfp_pages.h"
#include "virtual_board/twin/parts.h"

#include <algorithm>

namespace vb {

namespace {

using language::Bytes;

constexpr uint32_t kCableCodes = 8; // of a module's first page
constexpr uint8_t kPassiveOrActive = 0x0C;
constexpr uint32_t kTenGigabitCodes = 3;
constexpr uint8_t kLongReach = 0x20;

/** The kind of module that answers at the same addresses, and for the same reasons. */
SfpKind kindOf(const Bytes &id, const Bytes &page, int64_t copper) {
    constexpr SfpKind kCopper[] = {SfpKind::CopperMode4, SfpKind::CopperMode12,
                                   SfpKind::CopperOther};
    if (id.empty() && page.empty())
        return SfpKind::Dead;
    if (copper != 0)
        return kCopper[copper - 1];
    if (!page.empty()) {
        const bool isLong =
            id.size() > kTenGigabitCodes && (id[kTenGigabitCodes] & kLongReach) != 0;
        return isLong ? SfpKind::Lr : SfpKind::Sr;
    }
    const bool isCable = id.size() > kCableCodes && (id[kCableCodes] & kPassiveOrActive) != 0;
    return isCable ? SfpKind::Dac : SfpKind::Sx;
}

void makePage(Twin &twin, const std::string &name, const Bytes &bytes,
              uint8_t (&page)[kSfpPageSize]) {
    if (bytes.size() > kSfpPageSize)
        twin.lack(name, "it is larger than a page");
    else
        std::copy(bytes.begin(), bytes.end(), page);
}

/** What its lines tell. The level of light is the usual one where the unit's would tell otherwise.
 */
void makeState(Twin &twin, SfpModule &module, uint32_t port) {
    if (twin.text("sfp.#.tx-fault", port) == "yes")
        module.state = SfpState::TxFault;
    module.isLinkUp = twin.text("sfp.#.rx-loss", port) == "no" ? 1 : 0;
    const auto light = twin.number("sfp.#.rx-power", port, 0, UINT16_MAX);
    if (light && *light >= sfpTraits(module.kind).lostBelow && *light <= kSfpMostMicrowatts)
        module.microwatts = static_cast<uint32_t>(*light);
}

void makePhy(Twin &twin, SfpModule &module, uint32_t port) {
    const std::string row = twinName("sfp.#.phy.#", port);
    for (uint32_t reg = 0; reg < kSfpPhyRegisters; ++reg) {
        if (const auto content = twin.number(row, reg, 0, UINT16_MAX))
            storeSfpWord(&module.phy[size_t{2} * reg], static_cast<int32_t>(*content));
    }
}

void makeModule(Twin &twin, uint32_t port) {
    SfpModule &module = sfpModule(twin.board(), port);
    const Bytes id = twin.bytes("sfp.#.id", port);
    const Bytes page = twin.bytes("sfp.#.diagnostics", port);
    sfpPlug(module, kindOf(id, page, twin.number("sfp.#.copper", port, 0, 3).value_or(0)), port, 0);
    makePage(twin, twinName("sfp.#.id", port), id, module.id);
    if (!page.empty() && sfpHasDiagnostics(module)) {
        makePage(twin, twinName("sfp.#.diagnostics", port), page, module.diagnostics);
        module.isHeld = 1; // it tells what it told, until the world changes it
    } else if (!page.empty()) {
        twin.lack(twinName("sfp.#.diagnostics", port), "copper modules here have none");
    }
    makeState(twin, module, port);
    makePhy(twin, module, port);
}

} // namespace

void makeTwinModules(Twin &twin) {
    for (uint32_t port = 1; port <= kMostPorts; ++port) {
        const std::string name = twinName("sfp.#.present", port);
        if (!isSfpCage(twin.model, port)) {
            if (twin.unit.find(name) != nullptr)
                twin.lack(name, "this model has no cage there");
        } else if (twin.text("sfp.#.present", port) == "yes" || twin.has("sfp.#.id", port)) {
            makeModule(twin, port);
        }
    }
    driveSfpLines(twin.board(), 0);
}

} // namespace vb
