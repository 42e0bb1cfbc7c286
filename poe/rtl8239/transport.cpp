#include "poe/rtl8239/transport.h"

#include "bsp.h"
#include "poe/lock_file.h"
#include "poe/rtl8239/bus.h"
#include "poe/rtl8239/frame.h"
#include "poe/rtl8239/reply_plan.h"
#include "support/message.h"

#include <unistd.h>

namespace {

using namespace bsp::rtl8239;

constexpr int kAttempts = 5;

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
    bsp::reportError(site, "ptr buff is NULL.\n");
    return true;
}

} // namespace

uint8_t rtl8239CmdChecksum(const uint8_t *buffer, int32_t length) {
    return buffer != nullptr ? sumOf(buffer, length) : uint8_t{0};
}

int32_t rtl8239CmdResponseCheck(const uint8_t *request, const uint8_t *response) {
    if (request == nullptr || response == nullptr)
        return BSP_E_POE_NULL;
    return answers(request, response) ? BSP_OK : BSP_E_POE_FRAME;
}

int32_t rtl8239CmdMessage(const uint8_t *request, uint8_t *response, int32_t length) {
    if (isNull(request, response))
        return BSP_E_POE_NULL;
    const uint8_t command = request[0];
    usleep(kSettle);
    if (const int32_t status = rtl8239CmdRequest(request, length); status != BSP_OK) {
        bsp::reportError(bsp::CallSite::here(), "rtl8239CmdRequest failed, cmd=0x%x.\n", command);
        return status;
    }
    const ReplyPlan plan = planReply(request);
    if (plan.wait != 0)
        usleep(plan.wait);
    const int32_t status = awaitReply(request, response, plan);
    // The loader is silent while it restarts; its callers expect that.
    if (status != BSP_OK && command != kMisc)
        bsp::reportError(bsp::CallSite::here(),
                         "rtl8239CmdResponse failed, cmd=0x%x, errno is %d.\n", command, status);
    return status;
}

int32_t rtl8239CmdMessageSafe(uint8_t *request, uint8_t *response) {
    if (isNull(request, response))
        return BSP_E_POE_NULL;
    if (isRefused(request))
        return BSP_E_POE_UNAVAILABLE;
    const bsp::PoeLock lock;
    if (lock.isRefused()) {
        bsp::reportPlace(bsp::CallSite::here());
        return BSP_E_POE_LOCK;
    }
    if (!hasOwnSecondByte(request[0]))
        request[1] = lock.nextNumber();
    request[kChecksumAt] = rtl8239CmdChecksum(request, kChecksumAt);
    return rtl8239CmdMessage(request, response, kFrameSize);
}
