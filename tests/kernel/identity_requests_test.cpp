// What a virtual board does not see of the identity functions' system calls.

#include "tests/kernel/recorder.h"
#include "tests/support/answer.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

// Without truncation and appending: what the cache holds is wanted, and is rewritten in place.
TEST(IdentityRequestsTest, TheDeviceIdCacheIsOpenedForReadingAndWritingAndCreated) {
    recorder = Recorder();
    recorder.openResult = -1;
    uint32_t devId = 0xA5A5A5A5;
    EXPECT_EQ(answerOf([&] { return bspDevIdGet(&devId); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(recorder.calls, (Lines{"open /tmp/bsp/devId read-write create 0644 no-link"}));
    EXPECT_EQ(devId, 0xA5A5A5A5);
}

// Slot 3: an EEPROM is sent one offset byte; the rest of the offset is in its device address.
TEST(IdentityRequestsTest, AnEepromIsSentOneOffsetByte) {
    uint8_t byte = 0;
    const struct {
        std::function<int32_t()> call;
        const char *request;
        uint64_t devAddr;
    } cases[] = {
        {[&] { return bspI2cEepromRead(4, 3, 0x50, 0x123, &byte, 1); }, "ioctl 0x1003", 0x51},
        {[&] { return bspI2cEepromWrite(4, 3, 0x50, 0x323, &byte, 1); }, "ioctl 0x1004", 0x53},
    };
    for (const auto &expected : cases) {
        recorder = Recorder();
        EXPECT_EQ(expected.call(), BSP_OK);
        EXPECT_EQ(recorder.calls,
                  (Lines{"open /dev/bspHandle read-only", expected.request, "close"}));
        EXPECT_EQ(recorder.unit(0), 0x0304u) << "channel and bus";
        EXPECT_EQ(recorder.unit(8), expected.devAddr);
        EXPECT_EQ(recorder.unit(16), 0x23u) << "offset";
        EXPECT_EQ(recorder.unit(24), 1u) << "offset bytes";
        EXPECT_EQ(recorder.unit(40), 1u) << "length";
    }
}

} // namespace
