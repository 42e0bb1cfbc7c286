#pragma once
// How the reply to each request is waited for, which the controller's firmware decides.

#include "poe/rtl8239/frame.h"
#include "poe/rtl8239/timing.h"

#include <cstdint>

namespace bsp::rtl8239 {

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

} // namespace bsp::rtl8239
