#pragma once
// What the command builders have in common.

#include "bsp.h"
#include "language/formats/byte_order.h"
#include "poe/rtl8239/frame.h"
#include "poe/rtl8239/transport.h"
#include "support/message.h"

#include <cstddef>
#include <cstdint>

namespace bsp::rtl8239 {

constexpr bool isWithin(int32_t value, int32_t lowest, int32_t highest) {
    return value >= lowest && value <= highest;
}

constexpr bool isPort(int32_t port) {
    return isWithin(port, 0, BSP_POE_PORTS_MAX - 1);
}

constexpr bool isPortRange(int32_t firstPort, int32_t lastPort) {
    return firstPort >= 0 && lastPort >= firstPort && lastPort < BSP_POE_PORTS_MAX;
}

constexpr uint8_t asFlag(int32_t value) {
    return value > 0 ? 1 : 0;
}

/** A 16-bit value, most significant byte first. */
constexpr uint32_t wordAt(const Frame &frame, size_t at) {
    return formats::loadBe16(&frame[at]);
}

constexpr void storeWord(Frame &frame, size_t at, uint32_t word) {
    formats::storeBe16(&frame[at], static_cast<uint16_t>(word));
}

/** Quotient, rounded up. */
constexpr uint64_t ceilDivide(uint64_t value, uint64_t divisor) {
    return (value + divisor - 1) / divisor;
}

// The controller's units.
constexpr uint32_t kPowerUnit = BSP_POE_BUDGET_STEP_MW;
constexpr uint32_t kPowerLimitUnit = BSP_POE_PORT_LIMIT_STEP_MW;
constexpr uint32_t kVoltageUnit = 64450; // microvolts

constexpr uint32_t powerAt(const Frame &frame, size_t at) {
    return wordAt(frame, at) * kPowerUnit;
}

constexpr uint32_t toMillivolts(uint32_t value) {
    return static_cast<uint32_t>(uint64_t{value} * kVoltageUnit / 1000);
}

constexpr uint32_t voltageAt(const Frame &frame, size_t at) {
    return toMillivolts(wordAt(frame, at));
}

/** A request with a command code and, where given, its second byte. */
constexpr Frame requestFrame(Command command, uint8_t secondByte = kUnused) {
    Frame request = blankFrame();
    request[0] = command;
    request[1] = secondByte;
    return request;
}

/** Sends a request and receives the reply. */
inline int32_t exchange(Frame &request, Frame &reply) {
    return rtl8239CmdMessageSafe(request.data(), reply.data());
}

inline int32_t statusCheckFailed(CallSite site) {
    reportError(site, "response status check failed.\n");
    return BSP_E_POE_STATUS;
}

/** Sends a request whose reply tells at one byte whether the controller accepted it. */
inline int32_t command(Frame request, size_t statusAt = 2, CallSite site = CallSite::here()) {
    Frame reply = blankFrame();
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;
    return reply[statusAt] == 0 ? BSP_OK : statusCheckFailed(site);
}

} // namespace bsp::rtl8239
