#include "poe/rtl8239/transport.h"

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "poe/rtl8239/frame.h"
#include "support/message.h"

#include <cstdio>
#include <unistd.h>

namespace {

using namespace bsp::rtl8239;

constexpr uint32_t kBus = 16;
constexpr uint32_t kSegment = 0;
constexpr uint32_t kDevice = 0x20;

// What the controller's firmware needs between the steps of an exchange.
constexpr useconds_t kSettle = 100000;
constexpr useconds_t kPoll = 100000;
constexpr useconds_t kLoaderPoll = 25000;
constexpr useconds_t kGlobalEnableWait = 1100000;
constexpr useconds_t kMappingWait = 2100000;
constexpr int kAttempts = 5;
constexpr int32_t kDownloadReply = 4; // the loader repeats a block's header

/** How the reply to a request is waited for. */
struct ReplyPlan {
    useconds_t wait = 0; // before the first poll
    useconds_t poll = kPoll;
    int32_t length = kFrameSize;
    bool isChecked = true;
};

constexpr bool isDownload(uint8_t subCommand) {
    return subCommand >= kDownloadBank0 && subCommand <= kDownloadBank3;
}

constexpr ReplyPlan planLoaderReply(uint8_t subCommand) {
    if (subCommand == kJumpToLoader)
        return {.poll = kLoaderPoll};
    if (subCommand == kJumpToApp)
        return {.poll = kLoaderPoll, .isChecked = false};
    if (isDownload(subCommand))
        return {.poll = kLoaderPoll, .length = kDownloadReply, .isChecked = false};
    return {};
}

constexpr ReplyPlan planReply(const uint8_t *request) {
    switch (request[0]) {
    case kGlobalEnable:
        return {.wait = kGlobalEnableWait};
    case kPortMappingEnable:
        return {.wait = kMappingWait};
    case kMisc:
        return planLoaderReply(request[1]);
    default:
        return {};
    }
}

/** Commands whose second byte belongs to the command instead of counting frames. */
constexpr bool hasOwnSecondByte(uint8_t command) {
    return command == kGlobalPowerSourceQuery || command == kMisc || command == kPortDetTrigger;
}

/** What only the firmware upgrade sends, which does so while it holds the lock. */
constexpr bool isRefused(const uint8_t *request) {
    if (request[0] == kReserved)
        return true;
    return request[0] == kMisc &&
           (request[1] == kJumpToLoader || request[1] == kJumpToApp || isDownload(request[1]));
}

bool hasController() {
    uint32_t devId = 0;
    return bspDevIdGet(&devId) == BSP_OK && bsp::boardModel(devId).poePorts != 0;
}

/** Checks a raw transfer's buffer and board; reported under the name of the transfer. */
int32_t checkTransfer(const uint8_t *buffer, int32_t length,
                      bsp::CallSite site = bsp::CallSite::here()) {
    if (buffer == nullptr || length < 1) {
        bsp::reportError("errno is 1102.", site);
        return BSP_E_POE_INVALID;
    }
    return hasController() ? BSP_OK : BSP_E_POE_UNAVAILABLE;
}

/** Polls for the reply; the last failure's status when none comes that fits. */
int32_t awaitReply(const uint8_t *request, uint8_t *response, const ReplyPlan &plan) {
    int32_t status = BSP_OK;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        usleep(plan.poll);
        status = rtl8239CmdResponse(response, plan.length);
        if (status == BSP_OK && plan.isChecked)
            status = rtl8239CmdResponseCheck(request, response);
        if (status == BSP_OK)
            return BSP_OK;
    }
    return status;
}

bool isNull(const uint8_t *request, const uint8_t *response,
            bsp::CallSite site = bsp::CallSite::here()) {
    if (request != nullptr && response != nullptr)
        return false;
    bsp::reportError("ptr buff is NULL.", site);
    return true;
}

} // namespace

int32_t rtl8239CmdRequest(const uint8_t *buffer, int32_t length) {
    if (const int32_t status = checkTransfer(buffer, length); status != BSP_OK)
        return status;
    return bspI2cWrite(kBus, kSegment, kDevice, 0, 0, buffer, length) == BSP_OK ? BSP_OK
                                                                                : BSP_E_POE_WRITE;
}

int32_t rtl8239CmdResponse(uint8_t *buffer, int32_t length) {
    if (const int32_t status = checkTransfer(buffer, length); status != BSP_OK)
        return status;
    return bspI2cRead(kBus, kSegment, kDevice, 0, 0, buffer, length) == BSP_OK ? BSP_OK
                                                                               : BSP_E_POE_READ;
}

uint8_t rtl8239CmdChecksum(const uint8_t *buffer, int32_t length) {
    unsigned sum = 0;
    for (int32_t i = 0; buffer != nullptr && i < length; ++i)
        sum += buffer[i];
    return static_cast<uint8_t>(sum);
}

int32_t rtl8239CmdResponseCheck(const uint8_t *request, const uint8_t *response) {
    if (request == nullptr || response == nullptr)
        return BSP_E_POE_NULL;
    const bool isEcho = response[0] == request[0] && response[1] == request[1];
    return isEcho && response[kChecksumAt] == rtl8239CmdChecksum(response, kChecksumAt)
               ? BSP_OK
               : BSP_E_POE_FRAME;
}

int32_t rtl8239CmdMessage(const uint8_t *request, uint8_t *response, int32_t length) {
    if (isNull(request, response))
        return BSP_E_POE_NULL;
    const uint8_t command = request[0];
    usleep(kSettle);
    if (const int32_t status = rtl8239CmdRequest(request, length); status != BSP_OK) {
        std::printf("ERROR: %s(%d): rtl8239CmdRequest failed, cmd=0x%x.\n", __func__, __LINE__,
                    command);
        return status;
    }
    const ReplyPlan plan = planReply(request);
    if (plan.wait != 0)
        usleep(plan.wait);
    const int32_t status = awaitReply(request, response, plan);
    // The loader is silent while it restarts; its callers expect that.
    if (status != BSP_OK && command != kMisc)
        std::printf("ERROR: %s(%d): rtl8239CmdResponse failed, cmd=0x%x, errno is %d.\n", __func__,
                    __LINE__, command, status);
    return status;
}

int32_t rtl8239CmdMessageSafe(uint8_t *request, uint8_t *response) {
    if (isNull(request, response))
        return BSP_E_POE_NULL;
    if (isRefused(request))
        return BSP_E_POE_UNAVAILABLE;
    int32_t lockResult = 0;
    const int32_t lock = bspPoeLockFileOpen(&lockResult);
    if (lockResult != 0) {
        std::printf("%s-%d \r\n", __func__, __LINE__);
        bspPoeLockFileClose(lock);
        return BSP_E_POE_LOCK;
    }
    if (!hasOwnSecondByte(request[0]))
        request[1] = bspPoeSeqNumNext(lock, nullptr);
    request[kChecksumAt] = rtl8239CmdChecksum(request, kChecksumAt);
    const int32_t status = rtl8239CmdMessage(request, response, kFrameSize);
    bspPoeLockFileClose(lock);
    return status;
}

int32_t bspPoeOnlineGet(uint32_t *out) {
    constexpr uint32_t kControlRegister = 6;
    constexpr uint16_t kMissing = 0x4000; // active low: 0 is a controller that is there
    if (out == nullptr)
        return BSP_E_POE_NULL;
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(kControlRegister, &reg); status != BSP_OK) {
        std::printf("%s-%d: bspCpldGet error. ret=%d \n", __func__, __LINE__, status);
        return status;
    }
    *out = (reg & kMissing) != 0 ? BSP_POE_CONTROLLER_MISSING : BSP_POE_CONTROLLER_PRESENT;
    return BSP_OK;
}

int32_t bspPoeRtl8239ResetSet(uint32_t value) {
    return bspGpioDirectionOutput(BSP_GPIO_POE_RESET, value != 0 ? BSP_GPIO_LOW : BSP_GPIO_HIGH);
}
