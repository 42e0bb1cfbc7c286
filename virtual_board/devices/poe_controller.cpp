#include "virtual_board/devices/poe_controller.h"

#include "virtual_board/devices/poe_kind.h"
#include "virtual_board/devices/poe_ports.h"

#include <algorithm>
#include <cstring>

namespace vb {

namespace {

constexpr uint64_t kStartNs = 500 * kPoeMs;
constexpr uint8_t kSilence = 0xFF;

} // namespace

const PoeKind *findPoeKind(PoeChip chip) {
    for (const PoeKindRow &row : kPoeKinds) {
        if (row.chip == chip)
            return &row.kind;
    }
    return nullptr;
}

const PoeKind &poeKindOf(const PoeController &poe) {
    const PoeKind *kind = findPoeKind(poe.chip);
    return kind != nullptr ? *kind : kPoeKinds[0].kind; // a board that is open may be damaged
}

void poeEnterMode(PoeController &poe, PoeMode mode, uint64_t nowNs) {
    poe.mode = mode;
    poe.runsFromNs = nowNs + kStartNs;
    poeResetPorts(poe);
    poeKindOf(poe).begin(poe);
    if (mode == PoeMode::Application)
        poeRefreshPorts(poe, poe.runsFromNs);
}

void poeBuild(PoeController &poe, PoeChip chip) {
    poe.isFitted = 1;
    poe.chip = chip;
    poeKindOf(poe).build(poe);
    poeEnterMode(poe, PoeMode::Application, 0);
    poe.runsFromNs = 0;
}

void poeStart(PoeController &poe, uint64_t nowNs) {
    poe.replyLength = 0;
    poeEnterMode(poe, poeKindOf(poe).firstMode(poe), nowNs);
}

void poeSetReset(PoeController &poe, bool isHeld, bool isStuck, uint64_t nowNs) {
    poe.isHeldInReset = isHeld ? 1 : 0;
    if (!isHeld && !isStuck)
        return poeStart(poe, nowNs);
    poe.replyLength = 0;
    poeEnterMode(poe, PoeMode::Reset, nowNs);
}

bool poeWrite(PoeController &poe, const uint8_t *data, uint32_t length, const PoeFrameFault &fault,
              uint64_t nowNs) {
    if (poe.mode == PoeMode::Reset || nowNs < poe.runsFromNs)
        return false;
    if (fault.hasPowerLoss) {
        poeStart(poe, nowNs);
        return false;
    }
    poeAdvance(poe, nowNs);
    poe.replyLength = 0;
    poe.latePolls = 0;
    const PoeKind &kind = poeKindOf(poe);
    poe.replyReadyNs = nowNs + kind.workTime(poe, data[0]);
    if (!fault.isIgnored)
        kind.serve(poe, data, length, fault, nowNs);
    if (poe.replyLength != 0)
        poe.latePolls = fault.latePolls;
    return true;
}

bool poeRead(PoeController &poe, uint8_t *data, uint32_t length, uint64_t nowNs) {
    if (poe.mode == PoeMode::Reset)
        return false;
    std::memset(data, kSilence, length);
    if (nowNs < poe.replyReadyNs || poe.replyLength == 0)
        return true;
    if (poe.latePolls > 0) {
        --poe.latePolls;
        return true;
    }
    std::memcpy(data, poe.reply, std::min(length, uint32_t{poe.replyLength}));
    return true;
}

bool poeIsConsistent(const PoeController &poe) {
    for (uint32_t port = 0; port < kPoePorts; ++port) {
        if (!poeIsConsistent(poe.port[port]) || !poeIsConsistent(poe.device[port]))
            return false;
    }
    const bool hasFlags = poe.isFitted <= 1 && poe.isMissing <= 1 && poe.isHeldInReset <= 1;
    const PoeKind *kind = findPoeKind(poe.chip);
    return hasFlags && poe.mode <= PoeMode::Loader && poe.replyLength <= kPoeLongestReply &&
           kind != nullptr && kind->isConsistent(poe);
}

} // namespace vb
