#include "virtual_board/devices/poe_controller.h"

#include "virtual_board/devices/poe_frame.h"
#include "virtual_board/devices/poe_ports.h"

#include <algorithm>
#include <cstring>

namespace vb {

namespace {

// How long the firmware works.
constexpr uint64_t kStartNs = 500 * kPoeMs;
constexpr uint64_t kUsualAnswerNs = 5 * kPoeMs;
constexpr uint64_t kEnableAnswerNs = 1000 * kPoeMs;
constexpr uint64_t kMappingAnswerNs = 2000 * kPoeMs;

constexpr uint8_t kSilence = 0xFF;
constexpr uint32_t kBlockHeader = 4;
constexpr uint32_t kBankSize = 0x10000;
constexpr uint32_t kLargestBlock = 32;

uint64_t answerTime(const PoeController &poe, uint8_t command) {
    if (poe.mode == PoeMode::Application && command == kPoeGlobalEnable)
        return kEnableAnswerNs;
    if (poe.mode == PoeMode::Application && command == kPoeMappingEnable)
        return kMappingAnswerNs;
    return kUsualAnswerNs;
}

void enterMode(PoeController &poe, PoeMode mode, uint64_t nowNs) {
    poe.mode = mode;
    poe.runsFromNs = nowNs + kStartNs;
    poeResetPorts(poe);
    poe.chipRegisters = 0;
    if (poe.hasSavedSettings != 0)
        poe.settings = poe.saved;
    else
        poeSetDefaults(poe.settings);
    if (mode == PoeMode::Application)
        poeRefreshPorts(poe, poe.runsFromNs);
}

/** Both know the way to the other. False for frames that are neither jump. */
bool serveJump(const PoeRequest &request) {
    PoeController &poe = request.poe;
    if (request.frame[0] != kPoeMisc)
        return false;
    if (request.frame[1] == kPoeJumpToLoader) {
        request.reply[2] = kPoeAccepted;
        if (poe.mode == PoeMode::Application)
            enterMode(poe, PoeMode::Loader, request.nowNs);
        return true;
    }
    if (request.frame[1] != kPoeJumpToApp || poe.mode != PoeMode::Loader)
        return false;
    const bool isWhole = poeIsWhole(poe.image);
    request.reply[2] = isWhole ? kPoeAccepted : kPoeRefused;
    if (isWhole) {
        poe.image.isValid = 1;
        enterMode(poe, PoeMode::Application, request.nowNs);
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
    std::memset(reply.byte, kSilence, sizeof(reply.byte));
    reply[0] = frame[0];
    reply[1] = frame[1];
    const PoeRequest request = {poe, frame, reply, fault.badPort, nowNs};
    const PoeSettings before = poe.settings;
    if (!(poe.mode == PoeMode::Application ? serveApplication(request) : serveJump(request)))
        return false;
    if (fault.hasNoEffect)
        poe.settings = before;
    reply[kPoeChecksumAt] = poeSum(reply.byte, kPoeChecksumAt);
    std::memcpy(poe.reply, reply.byte, sizeof(poe.reply));
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
    const uint32_t position = bank * kBankSize + (uint32_t{data[2]} << 8 | data[3]);
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
    poe.latePolls = fault.latePolls;
}

} // namespace

void poeBuild(PoeController &poe) {
    poe.isFitted = 1;
    poeProgramImage(poe.image);
    enterMode(poe, PoeMode::Application, 0);
    poe.runsFromNs = 0;
}

void poeStart(PoeController &poe, uint64_t nowNs) {
    poe.replyLength = 0;
    enterMode(poe, poe.image.isValid != 0 ? PoeMode::Application : PoeMode::Loader, nowNs);
}

void poeSetReset(PoeController &poe, bool isHeld, bool isStuck, uint64_t nowNs) {
    poe.isHeldInReset = isHeld ? 1 : 0;
    if (!isHeld && !isStuck)
        return poeStart(poe, nowNs);
    poe.replyLength = 0;
    enterMode(poe, PoeMode::Reset, nowNs);
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
    poe.replyReadyNs = nowNs + answerTime(poe, data[0]);
    if (fault.isIgnored)
        return true;
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
    const bool hasFlags = poe.isFitted <= 1 && poe.isMissing <= 1 && poe.isHeldInReset <= 1 &&
                          poe.hasSavedSettings <= 1;
    return hasFlags && poe.mode <= PoeMode::Loader && poe.replyLength <= kPoeFrameSize &&
           poe.chipRegisters <= kPoeChipRegisters && poeIsConsistent(poe.settings) &&
           poeIsConsistent(poe.saved) && poeIsConsistent(poe.image);
}

} // namespace vb
