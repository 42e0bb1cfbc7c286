#pragma once
// The RTL8239's frames: command code, a byte that the answer repeats, nine bytes of data,
// and the sum of all these.

#include "virtual_board/devices/byte_order.h"
#include "virtual_board/devices/poe_controller.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kPoeFrameSize = 12;
constexpr uint32_t kPoeChecksumAt = 11;
static_assert(kPoeFrameSize <= kPoeLongestReply);

struct PoeFrame {
    uint8_t byte[kPoeFrameSize];

    constexpr uint8_t &operator[](uint32_t at) { return byte[at]; }
    constexpr uint8_t operator[](uint32_t at) const { return byte[at]; }
};

// Commands that are more than a setting or a question.
constexpr uint8_t kPoeGlobalEnable = 0x00;
constexpr uint8_t kPoeMappingEnable = 0x05;
constexpr uint8_t kPoeMisc = 0xC0; // with a sub-command at byte 1

constexpr uint8_t kPoeJumpToLoader = 0x00;
constexpr uint8_t kPoeJumpToApp = 0x40;
constexpr uint8_t kPoeDownload = 0x80; // plus the bank

constexpr uint8_t kPoeAccepted = 0;
constexpr uint8_t kPoeRefused = 1;

inline uint8_t poeSum(const uint8_t *data, uint32_t length) {
    uint32_t sum = 0;
    for (uint32_t i = 0; i < length; ++i)
        sum += data[i];
    return static_cast<uint8_t>(sum);
}

constexpr uint32_t poeWord(const PoeFrame &frame, uint32_t at) {
    return loadBe16(frame.byte + at);
}

constexpr void poeStoreWord(PoeFrame &frame, uint32_t at, uint32_t word) {
    storeBe16(frame.byte + at, static_cast<uint16_t>(word));
}

constexpr uint32_t poeLong(const PoeFrame &frame, uint32_t at) {
    return loadBe32(frame.byte + at);
}

constexpr void poeStoreLong(PoeFrame &frame, uint32_t at, uint32_t value) {
    storeBe32(frame.byte + at, value);
}

/** A request that the application works on. The answer starts as the echo and unused bytes. */
struct PoeRequest {
    PoeController &poe;
    const PoeFrame &frame;
    PoeFrame &reply;
    uint32_t badPort;
    uint64_t nowNs;
};

/** Carries out a setting; false when the code is none of a setting. */
bool poeServeSetting(const PoeRequest &request);

/** Answers a question; false when the code is none of a question. */
bool poeServeQuery(const PoeRequest &request);

/** Serves a sub-command that concerns the stored settings; false for others. */
bool poeServeStoredSettings(const PoeRequest &request);

} // namespace vb
