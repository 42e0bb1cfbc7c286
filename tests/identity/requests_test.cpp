// What a virtual board does not see of the identity functions' system calls.

#include "bsp.h"
#include "tests/support/recorder.h"
#include "tests/support/virtual_board_test.h"

namespace {

class IdentityRequestsTest : public VirtualBoardTest {
  protected:
    Recorder recorder;
};

// Without truncation and appending: what the cache holds is wanted, and is rewritten in place.
TEST_F(IdentityRequestsTest, TheDeviceIdCacheIsOpenedForReadingAndWritingAndCreated) {
    recorder.failAlways("open");
    uint32_t devId = 0xA5A5A5A5;
    EXPECT_EQ(recorder.run([&] { return bspDevIdGet(&devId); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(recorder.calls, (Calls{"open /tmp/bsp/devId read-write create 0644 no-link"}));
    EXPECT_EQ(devId, 0xA5A5A5A5);
}

// Slot 3: an EEPROM is sent one offset byte; the rest of the offset is in its device address.
TEST_F(IdentityRequestsTest, AnEepromIsSentOneOffsetByte) {
    BspIoctlRecord sent{};
    recorder.before = [&](const SystemCall &call) -> std::optional<int64_t> {
        if (!call.is("ioctl"))
            return std::nullopt;
        sent = *static_cast<BspIoctlRecord *>(call.argument);
        return 0;
    };
    uint8_t byte = 0;
    const struct {
        std::function<int32_t()> call;
        const char *request;
        uint64_t devAddr;
    } cases[] = {
        {[&] { return bspI2cEepromRead(4, 3, 0x50, 0x123, &byte, 1); }, "request 0x1003", 0x51},
        {[&] { return bspI2cEepromWrite(4, 3, 0x50, 0x323, &byte, 1); }, "request 0x1004", 0x53},
    };
    for (const auto &expected : cases) {
        EXPECT_EQ(recorder.run(expected.call), Answer{BSP_OK});
        EXPECT_EQ(recorder.work(),
                  (Calls{"open /dev/bspHandle read-only", expected.request, "wait 1000 us"}));
        EXPECT_EQ(sent.slot[0], 0x0304u) << "channel and bus";
        EXPECT_EQ(sent.slot[1], expected.devAddr);
        EXPECT_EQ(sent.slot[2], 0x23u) << "offset";
        EXPECT_EQ(sent.slot[3], 1u) << "offset bytes";
        EXPECT_EQ(sent.slot[5], 1u) << "length";
    }
}

} // namespace
