#include "virtual_board/devices/rtl8239/kind.h"

#include "virtual_board/devices/byte_order.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/devices/rtl8239/frame.h"

#include <cstring>

namespace vb {

namespace {

// How long the firmware works.
constexpr uint64_t kUsualAnswerNs = 5 * kPoeMs;
constexpr uint64_t kEnableAnswerNs = 1000 * kPoeMs;
constexpr uint64_t kMappingAnswerNs = 2000 * kPoeMs;

constexpr uint32_t kBlockHeader = 4;
constexpr uint32_t kBankSize = 0x10000;
constexpr uint32_t kLargestBlock = 32;

void build(PoeController &poe) {
    poeProgramImage(poe.image);
}

void begin(PoeController &poe) {
    poe.rtl8239.chipRegisters = 0;
    if (poe.hasSavedSettings != 0)
        poe.rtl8239.settings = poe.rtl8239.saved;
    else
        poeSetDefaults(poe.rtl8239.settings);
}

PoeMode firstMode(const PoeController &poe) {
    return poe.image.isValid != 0 ? PoeMode::Application : PoeMode::Loader;
}

uint64_t workTime(const PoeController &poe, uint8_t command) {
    if (poe.mode == PoeMode::Application && command == kPoeGlobalEnable)
        return kEnableAnswerNs;
    if (poe.mode == PoeMode::Application && command == kPoeMappingEnable)
        return kMappingAnswerNs;
    return kUsualAnswerNs;
}

/** Both know the way to the other. False for frames that are neither jump. */
bool serveJump(const PoeRequest &request) {
    PoeController &poe = request.poe;
    if (request.frame[0] != kPoeMisc)
        return false;
    if (request.frame[1] == kPoeJumpToLoader) {
        request.reply[2] = kPoeAccepted;
        if (poe.mode == PoeMode::Application)
            poeEnterMode(poe, PoeMode::Loader, request.nowNs);
        return true;
    }
    if (request.frame[1] != kPoeJumpToApp || poe.mode != PoeMode::Loader)
        return false;
    const bool isWhole = poeIsWhole(poe.image);
    request.reply[2] = isWhole ? kPoeAccepted : kPoeRefused;
    if (isWhole) {
        poe.image.isValid = 1;
        poeEnterMode(poe, PoeMode::Application, request.nowNs);
    }
    return true;
}

bool serveApplication(const PoeRequest &request) {
    if (serveJump(request))
        return true;
    if (request.frame[0] == kPoeMisc)
        return poeServeStoredSettings(request);
    return poeServeQuery(request) || poeServeSetting(request);
}

/** Works on a whole frame; false when there is nothing to answer. */
bool serveFrame(PoeController &poe, const PoeFrame &frame, const PoeFrameFault &fault,
                uint64_t nowNs) {
    if (frame[kPoeChecksumAt] != poeSum(frame.byte, kPoeChecksumAt))
        return false;
    PoeFrame reply = {};
    std::memset(reply.byte, kPoeNone, sizeof(reply.byte));
    reply[0] = frame[0];
    reply[1] = frame[1];
    const PoeRequest request = {poe, frame, reply, fault.badPort, nowNs};
    const PoeSettings before = poe.rtl8239.settings;
    if (!(poe.mode == PoeMode::Application ? serveApplication(request) : serveJump(request)))
        return false;
    if (fault.hasNoEffect)
        poe.rtl8239.settings = before;
    reply[kPoeChecksumAt] = poeSum(reply.byte, kPoeChecksumAt);
    std::memcpy(poe.reply, reply.byte, sizeof(reply.byte));
    poe.replyLength = kPoeFrameSize;
    return true;
}

bool isBlock(const PoeController &poe, const uint8_t *data, uint32_t length) {
    return poe.mode == PoeMode::Loader && length > kBlockHeader &&
           length <= kBlockHeader + kLargestBlock && data[0] == kPoeMisc && data[1] >= kPoeDownload;
}

/** The loader takes a block, or keeps silent when it has no place for it. */
bool serveBlock(PoeController &poe, const uint8_t *data, uint32_t length,
                const PoeFrameFault &fault) {
    const uint32_t bank = data[1] - uint32_t{kPoeDownload};
    const uint32_t position = bank * kBankSize + loadBe16(data + 2);
    if (!fault.hasNoEffect &&
        !poeProgramBlock(poe.image, position, data + kBlockHeader, length - kBlockHeader))
        return false;
    std::memcpy(poe.reply, data, kBlockHeader);
    poe.replyLength = kBlockHeader;
    return true;
}

void spoil(PoeController &poe, const PoeFrameFault &fault) {
    if (fault.hasWrongEcho) {
        poe.reply[1] = static_cast<uint8_t>(~poe.reply[1]);
        poe.reply[kPoeChecksumAt] = poeSum(poe.reply, kPoeChecksumAt);
    }
    if (fault.hasWrongChecksum)
        poe.reply[kPoeChecksumAt] = static_cast<uint8_t>(~poe.reply[kPoeChecksumAt]);
}

void serve(PoeController &poe, const uint8_t *data, uint32_t length, const PoeFrameFault &fault,
           uint64_t nowNs) {
    bool isAnswered = false;
    if (isBlock(poe, data, length)) {
        isAnswered = serveBlock(poe, data, length, fault);
    } else if (length == kPoeFrameSize) {
        PoeFrame frame = {};
        std::memcpy(frame.byte, data, sizeof(frame.byte));
        isAnswered = serveFrame(poe, frame, fault, nowNs);
    }
    if (isAnswered)
        spoil(poe, fault);
}

PoePortRules portRules(const PoeController &poe, uint32_t port) {
    const PoeSettings &settings = poe.rtl8239.settings;
    const PoePortSettings &own = settings.port[port];
    const bool isWired = settings.isMappingEnabled != 0 && port < settings.portCount &&
                         own.isMapped != 0 && own.chipAddress != kPoeNone;
    return {.isInService = settings.isEnabled != 0 && isWired && own.enable != 0,
            .goal = poeGoalOf(own),
            .powersLegacy = own.detType == kPoeDetectLegacy,
            .noticesDisconnect = own.disconnectType != 0,
            .isLimitFixed = own.limitType == kPoeLimitFixed,
            .limitMw = own.limit * kPoeLimitUnit,
            .priority = own.priority};
}

PoeBudget budget(const PoeController &poe) {
    const PoeSettings &settings = poe.rtl8239.settings;
    return {.isKept = settings.pmMode != kPoePmNone,
            .powerMw = settings.bank[0].power * kPoePowerUnit,
            .reserveMw = settings.bank[0].reserve * kPoePowerUnit,
            .countsDrawn = poeCountsDrawn(settings.pmMode),
            .servesByPriority = poeServesByPriority(settings.pmMode)};
}

bool isConsistent(const PoeController &poe) {
    const Rtl8239Memory &memory = poe.rtl8239;
    return poe.hasSavedSettings <= 1 && memory.chipRegisters <= kPoeChipRegisters &&
           poeIsConsistent(memory.settings) && poeIsConsistent(memory.saved) &&
           poeIsConsistent(poe.image);
}

} // namespace

constexpr PoeKind kRtl8239Kind = {.build = build,
                                  .begin = begin,
                                  .firstMode = firstMode,
                                  .workTime = workTime,
                                  .serve = serve,
                                  .portRules = portRules,
                                  .budget = budget,
                                  .isConsistent = isConsistent};

} // namespace vb
