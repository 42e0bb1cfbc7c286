#include "poe/rtl8239/guide.h"

#include "bsp.h"
#include "language/formats/byte_order.h"
#include "poe/rtl8239/debug_words.h"
#include "poe/rtl8239/firmware.h"
#include "poe/rtl8239/frame.h"
#include "poe/rtl8239/port_values.h"
#include "poe/rtl8239/reply_plan.h"
#include "poe/rtl8239/timing.h"

#include <array>

namespace bsp::rtl8239 {

namespace {

/** What the exchange of a command takes at least. */
constexpr uint32_t leastMs(Command command, uint8_t secondByte = kUnused) {
    const uint8_t start[] = {command, secondByte};
    const ReplyPlan plan = planReply(start);
    return (kSettle + plan.wait + plan.poll) / 1000;
}

constexpr uint32_t kFrameMs = leastMs(kQuery41); // as that of most commands

// The initialisation, as device_init.cpp carries it out.

/** A part of it: its requests, and what each takes at least. */
struct Phase {
    const char *name;
    uint32_t requests;
    uint32_t requestMs;
};

constexpr std::array<Phase, 14> phasesFor(uint32_t ports) {
    constexpr uint32_t kSwitchMs = leastMs(kGlobalEnable);
    constexpr uint32_t kMappingMs = leastMs(kPortMappingEnable);
    const uint32_t perSetting = (ports + kPairsPerFrame - 1) / kPairsPerFrame;
    return {{{"reset the controller", 0, 2 * kResetSeconds * 1000},
             {"switch all ports off", 1, kSwitchMs},
             {"forget the port mapping", 1, kMappingMs},
             {"map the ports", BSP_POE_PORTS_MAX, kFrameMs},
             {"set priorities", perSetting, kFrameMs},
             {"set modes", perSetting, kFrameMs},
             {"set kinds of power limit", perSetting, kFrameMs},
             {"set kinds of detection", perSetting, kFrameMs},
             {"set forced inrush", perSetting, kFrameMs},
             {"set kinds of disconnection", perSetting, kFrameMs},
             {"set voltages and the power budget", 3, kFrameMs},
             {"use the port mapping", 1, kMappingMs},
             {"set the ports' limits", 2 * ports, kFrameMs},
             {"switch all ports on", 1, kSwitchMs}}};
}
constexpr uint32_t kPhases = phasesFor(0).size();

PoeWorkStep initStep(uint32_t ports, uint32_t index) {
    const Phase phase = phasesFor(ports)[index];
    return {phase.name, phase.requestMs * (phase.requests != 0 ? phase.requests : 1)};
}

std::optional<PoeWorkPlace> initPlace(uint32_t ports, uint32_t requestsBefore, PoeBytes) {
    uint32_t left = requestsBefore;
    uint32_t step = 0;
    for (const Phase &phase : phasesFor(ports)) {
        if (left < phase.requests)
            return PoeWorkPlace{step, left * phase.requestMs};
        left -= phase.requests;
        ++step;
    }
    return PoeWorkPlace{step, 0};
}

// The upgrade, as firmware.cpp carries it out.

constexpr uint32_t kRestMs = kRestSeconds * 1000;
constexpr uint32_t kBlockMs = leastMs(kMisc, kDownloadBank0);

enum UpgradeStep : uint32_t { kAsk, kLoader, kWrite, kStart, kUpgradeSteps };

PoeWorkStep upgradeStep(uint32_t size, uint32_t index) {
    const uint32_t blocks = (size + kBlockSize - 1) / kBlockSize;
    const PoeWorkStep steps[kUpgradeSteps] = {
        {"ask the controller", kFrameMs},
        {"start its loader", kRestMs + leastMs(kMisc, kJumpToLoader) + kLoaderSeconds * 1000},
        {"write the image", blocks * kBlockMs},
        {"start the new firmware", kRestMs + leastMs(kMisc, kJumpToApp) + kRestMs}};
    return steps[index];
}

std::optional<PoeWorkPlace> upgradePlace(uint32_t, uint32_t, PoeBytes request) {
    if (request.size() < kBlockHeader)
        return {};
    if (request[0] != kMisc)
        return PoeWorkPlace{kAsk, 0};
    if (request[1] == kJumpToLoader)
        return PoeWorkPlace{kLoader, kRestMs};
    if (request[1] == kJumpToApp)
        return PoeWorkPlace{kStart, kRestMs};
    if (!isDownload(request[1]))
        return {};
    const uint32_t bank = request[1] - uint32_t{kDownloadBank0};
    const uint32_t position = bank * kBankSize + formats::loadBe16(&request[2]);
    return PoeWorkPlace{kWrite, position / kBlockSize * kBlockMs};
}

bool isAnswer(PoeBytes request, PoeBytes reply) {
    return request.size() >= 2 && reply.size() == kFrameSize &&
           answers(request.data(), reply.data());
}

std::optional<uint32_t> priorityIn(PoeBytes reply, uint32_t port) {
    if (reply.size() != kFrameSize || reply[0] != kQuery49 || reply[2] != port - 1 ||
        reply[kPriorityAt] > BSP_POE_PRIORITY_MAX)
        return {};
    return turnedPriority(reply[kPriorityAt]);
}

constexpr const char *kDebugWords[] = {kPoeCommandWord};

} // namespace

constexpr PoeGuide kGuide = {
    .initialisation = {kPhases, initStep, initPlace},
    .upgrade = {kUpgradeSteps, upgradeStep, upgradePlace},
    .image = {BSP_POE_FIRMWARE_MIN, BSP_POE_FIRMWARE_MAX, BSP_POE_FIRMWARE_STEP},
    .exchangeMs = kFrameMs,
    .portLimitStepMw = BSP_POE_PORT_LIMIT_STEP_MW,
    .budgetStepMw = BSP_POE_BUDGET_STEP_MW,
    .isAnswer = isAnswer,
    .priorityIn = priorityIn,
    .debugWords = kDebugWords,
};

} // namespace bsp::rtl8239
