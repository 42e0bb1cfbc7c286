// The one channel to the kernel module: open, ioctl, close around every request.

#include "tests/kernel/recorder.h"
#include "tests/support/answer.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

class ChannelTest : public ::testing::Test {
  protected:
    void SetUp() override { recorder = Recorder(); }

    BspIoctlRecord record_{};
};

TEST_F(ChannelTest, OpensTheNodeReadOnlyAsksAndCloses) {
    EXPECT_EQ(answerOf([&] { return bspFuncIoctl_handle(0x1234, &record_); }), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls, (Lines{"open /dev/bspHandle read-only", "ioctl 0x1234", "close"}));
}

TEST_F(ChannelTest, PassesTheCodeAsItIs) {
    EXPECT_EQ(bspFuncIoctl_handle(0x80000001, &record_), BSP_OK);
    EXPECT_EQ(recorder.calls.at(1), "ioctl 0x80000001");
}

TEST_F(ChannelTest, PassesTheCallersOwnRecord) {
    BspIoctlRecord *seen = nullptr;
    recorder.driver = [&](BspIoctlRecord &record) { seen = &record; };
    EXPECT_EQ(bspFuncIoctl_handle(0x1001, &record_), BSP_OK);
    EXPECT_EQ(seen, &record_);
}

TEST_F(ChannelTest, TakesDescriptorZeroForAnOpenNode) {
    recorder.openResult = 0;
    EXPECT_EQ(answerOf([&] { return bspFuncIoctl_handle(0x1001, &record_); }), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls, (Lines{"open /dev/bspHandle read-only", "ioctl 0x1001", "close"}));
}

TEST_F(ChannelTest, AnswersTheResultOfAFailedOpen) {
    for (const int result : {-1, -13}) {
        recorder = Recorder();
        recorder.openResult = result;
        EXPECT_EQ(answerOf([&] { return bspFuncIoctl_handle(0x1001, &record_); }),
                  (Answer{result, "open file /dev/bspHandle fail\n"}));
        EXPECT_EQ(recorder.calls, (Lines{"open /dev/bspHandle read-only"}));
    }
}

TEST_F(ChannelTest, AnswersTheResultOfAFailedIoctlAndCloses) {
    for (const int result : {-1, -25}) {
        recorder = Recorder();
        recorder.ioctlResult = result;
        EXPECT_EQ(answerOf([&] { return bspFuncIoctl_handle(0x1008, &record_); }),
                  (Answer{result, "ioctl fail, cmd=0x1008\n"}));
        EXPECT_EQ(recorder.calls,
                  (Lines{"open /dev/bspHandle read-only", "ioctl 0x1008", "close"}));
    }
}

TEST_F(ChannelTest, TakesAPositiveIoctlResultForSuccess) {
    recorder.ioctlResult = 7;
    EXPECT_EQ(answerOf([&] { return bspFuncIoctl_handle(0x1001, &record_); }), Answer{BSP_OK});
    EXPECT_EQ(recorder.calls.back(), "close");
}

TEST_F(ChannelTest, LeavesTheDriversResultWordToTheCaller) {
    recorder.driver = [](BspIoctlRecord &record) { record.result = -5; };
    EXPECT_EQ(bspFuncIoctl_handle(0x1001, &record_), BSP_OK);
    EXPECT_EQ(record_.result, -5);
}

TEST_F(ChannelTest, ANullRecordIsRefusedBeforeAnythingIsDone) {
    EXPECT_EQ(answerOf([] { return bspFuncIoctl_handle(0x1001, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(recorder.calls, Lines{});
}

} // namespace
