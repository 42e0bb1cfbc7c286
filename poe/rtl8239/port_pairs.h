#pragma once
// Frames that concern several ports: pairs of a port and its value at bytes 2-9.

#include "poe/rtl8239/exchange.h"

#include <algorithm>

namespace bsp::rtl8239 {

constexpr uint8_t kTriggerSet = 0; // second byte of the detection trigger's frames
constexpr uint8_t kTriggerGet = 1;

constexpr size_t pairAt(int pair) {
    return 2 + 2 * static_cast<size_t>(pair);
}

constexpr void storePair(Frame &frame, int pair, int32_t port, uint8_t value) {
    frame[pairAt(pair)] = static_cast<uint8_t>(port);
    frame[pairAt(pair) + 1] = value;
}

constexpr bool echoesPort(const Frame &reply, int pair, int32_t port) {
    return reply[pairAt(pair)] == port;
}

constexpr uint8_t pairValue(const Frame &reply, int pair) {
    return reply[pairAt(pair) + 1];
}

/** Calls a function (first port, number of ports) for each frame's ports until one fails. */
template <typename SendFrame>
int32_t forEachFrame(int32_t firstPort, int32_t lastPort, SendFrame sendFrame) {
    for (int32_t port = firstPort; port <= lastPort; port += kPairsPerFrame) {
        const int count = std::min(kPairsPerFrame, lastPort - port + 1);
        if (const int32_t status = sendFrame(port, count); status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

inline void reportPortsFailed(const char *action, const char *setting, int32_t port, int count,
                              CallSite site) {
    reportError(site, "%s port %d-%d %s failed.\n", action, port, port + count - 1, setting);
}

inline int32_t reportPortCheckFailed(int32_t port, int32_t status, CallSite site) {
    reportError(site, "port %d response status check failed.\n", port);
    return status;
}

} // namespace bsp::rtl8239
