// The one channel to the kernel module: open, ioctl, close around every request.

#include "tests/kernel/request_test.h"
#include "tests/support/descriptor_zero.h"
#include "tests/support/library_holdings.h"

namespace {

class ChannelTest : public RequestTest {
  protected:
    Answer send(uint32_t code) {
        return ask([&] { return bspFuncIoctl_handle(code, &sent); });
    }

    BspIoctlRecord sent{};
};

TEST_F(ChannelTest, OpensTheNodeReadOnlyAsksAndCloses) {
    EXPECT_EQ(send(0x1234), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls, requestOf("0x1234"));
}

TEST_F(ChannelTest, PassesTheCodeAsItIs) {
    EXPECT_EQ(send(0x80000001), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls, requestOf("0x80000001"));
}

TEST_F(ChannelTest, PassesTheCallersOwnRecord) {
    BspIoctlRecord *seen = nullptr;
    driver = [&](BspIoctlRecord &arrived) { seen = &arrived; };
    EXPECT_EQ(send(0x1001), Answer{BSP_OK});
    EXPECT_EQ(seen, &sent);
}

TEST_F(ChannelTest, TakesDescriptorZeroForAnOpenNode) {
    const auto call = [&] {
        const FreeDescriptorZero zero;
        return bspFuncIoctl_handle(0x1001, &sent);
    };
    EXPECT_EQ(ask(call), Answer{BSP_OK});
    EXPECT_EQ(libraryHas.numberOf("/dev/bspHandle"), 0);
    EXPECT_EQ(recorder.calls, requestOf("0x1001"));
}

TEST_F(ChannelTest, AnswersTheResultOfAFailedOpen) {
    for (const int result : {-1, -13}) {
        recorder.clearFailures();
        recorder.fail("open", 1, result);
        EXPECT_EQ(send(0x1001), (Answer{result, "open file /dev/bspHandle fail\n"}));
        EXPECT_EQ(recorder.calls, Calls{"open /dev/bspHandle read-only"});
    }
}

TEST_F(ChannelTest, AnswersTheResultOfAFailedIoctlAndCloses) {
    for (const int result : {-1, -25}) {
        ioctlResult = result;
        EXPECT_EQ(send(0x1008), (Answer{result, "ioctl fail, cmd=0x1008\n"}));
        EXPECT_EQ(recorder.calls, requestOf("0x1008"));
    }
}

TEST_F(ChannelTest, TakesAPositiveIoctlResultForSuccess) {
    ioctlResult = 7;
    EXPECT_EQ(send(0x1001), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls, requestOf("0x1001"));
}

TEST_F(ChannelTest, LeavesTheDriversResultWordToTheCaller) {
    driver = [](BspIoctlRecord &arrived) { arrived.result = -5; };
    EXPECT_EQ(send(0x1001), Answer{BSP_OK});
    EXPECT_EQ(sent.result, -5);
}

TEST_F(ChannelTest, ANullRecordIsRefusedBeforeAnythingIsDone) {
    EXPECT_EQ(ask([] { return bspFuncIoctl_handle(0x1001, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(recorder.calls, Calls{});
}

} // namespace
