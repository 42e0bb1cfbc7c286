#pragma once
// The controller's frames: 12 bytes each way. The last byte is the sum of the others.

#include "bsp.h"

#include <array>
#include <cstdint>

namespace bsp::rtl8239 {

constexpr int kFrameSize = BSP_POE_FRAME_SIZE;
constexpr int kChecksumAt = 11;
constexpr uint8_t kUnused = 0xFF; // what bytes without a meaning hold

using Frame = std::array<uint8_t, kFrameSize>;

constexpr Frame blankFrame() {
    Frame frame{};
    frame.fill(kUnused);
    return frame;
}

constexpr uint8_t sumOf(const uint8_t *bytes, int32_t length) {
    unsigned sum = 0;
    for (int32_t i = 0; i < length; ++i)
        sum += bytes[i];
    return static_cast<uint8_t>(sum);
}

/** Whether a frame's sum is right, and it repeats what it has to of a request. */
constexpr bool answers(const uint8_t *request, const uint8_t *response) {
    return response[0] == request[0] && response[1] == request[1] &&
           response[kChecksumAt] == sumOf(response, kChecksumAt);
}

constexpr int kPairsPerFrame = 4; // ports that a frame for several of them concerns

/** Command codes, byte 0 of a frame. */
enum Command : uint8_t {
    kGlobalEnable = 0x00,
    kPortEnable = 0x01,
    kGlobalReset = 0x02,
    kPortReset = 0x03,
    kGlobalPowerSource = 0x04,
    kPortMappingEnable = 0x05,
    kPortPairMapping = 0x06,
    kPortFuncMode = 0x08,
    kPortDetType = 0x09,
    kPortDetTrigger = 0x0A,
    kPortClsTrigger = 0x0B,
    kPortInrushMode = 0x0C,
    kPortForceInrush = 0x0D,
    kGlobalParam = 0x0E,
    kPortDisconnectType = 0x0F,
    kGlobalPmMode = 0x10,
    kGlobalPmModeExt = 0x11,
    kPortMaxPowerType = 0x12,
    kPortMaxPowerValueExt = 0x14,
    kPortPriority = 0x15,
    kGlobalPortEventMask = 0x16,
    kPortTriggerDetClsPwr = 0x18,
    kSystemInfo = 0x40,
    kQuery41 = 0x41,
    kPortStatus = 0x42,
    kPortMeasurement = 0x44,
    kQuery45 = 0x45,
    kQuery46 = 0x46,
    kQuery48 = 0x48,
    kQuery49 = 0x49,
    kGlobalParamQuery = 0x4A,
    kGlobalPowerSourceQuery = 0x4B,
    kQuery4C = 0x4C,
    kPortFuncModeQuery = 0x4D,
    kQuery4E = 0x4E,
    kQuery4F = 0x4F,
    kQuery50 = 0x50,
    kMisc = 0xC0,
    kReserved = 0xCA,
    kDebugChipRegWrite = 0xF0,
    kDebugChipRegRead = 0xF1,
};

/** Sub-commands of kMisc, byte 1 of a frame. */
enum Misc : uint8_t {
    kJumpToLoader = 0x00,
    kConfigSave = 0x01,
    kConfigClear = 0x02,
    kConfigReset = 0x05,
    kConfigInit = 0x06,
    kJumpToApp = 0x40,
    kDownloadBank0 = 0x80, // and one more for each bank of 65536 bytes
    kDownloadBank3 = 0x83,
};

} // namespace bsp::rtl8239
