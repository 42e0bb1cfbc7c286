// When something happens on a board by itself.

#include "virtual_board/board/moments.h"

#include "tests/support/virtual_board_test.h"

namespace {

constexpr uint64_t kMs = 1000000;

class MomentsTest : public VirtualBoardTest {
  protected:
    uint64_t behind(uint64_t nowMs) const { return vb::nextMoment(board(), nowMs * kMs); }
};

TEST_F(MomentsTest, ClimateGoesOnInSteps) {
    EXPECT_EQ(behind(0), 100 * kMs);
    EXPECT_EQ(behind(99), 100 * kMs);
    EXPECT_EQ(behind(100), 200 * kMs);
    EXPECT_EQ(vb::nextMoment(board(), 100 * kMs - 1), 100 * kMs);
}

TEST_F(MomentsTest, PhasesOfPoePortsEnd) {
    devices().poe.port[7].dueNs = 230 * kMs;
    devices().poe.port[47].dueNs = 220 * kMs;
    EXPECT_EQ(behind(150), 200 * kMs);
    EXPECT_EQ(behind(200), 220 * kMs);
    devices().poe.port[47].dueNs = vb::kPoeNever;
    EXPECT_EQ(behind(200), 230 * kMs);
    EXPECT_EQ(behind(230), 300 * kMs) << "what is over is no moment to come";
    devices().poe.isFitted = 0;
    EXPECT_EQ(behind(200), 300 * kMs);
}

TEST_F(MomentsTest, TheCalendarClockCountsItsSeconds) {
    devices().clockChip.countedNs = 30 * kMs;
    EXPECT_EQ(behind(1000), 1030 * kMs);
    EXPECT_EQ(behind(1030), 1100 * kMs);
}

TEST_F(MomentsTest, TheWatchdogExpires) {
    devices().watchdog.fedNs = 10 * kMs;
    EXPECT_EQ(behind(1001), 1100 * kMs);
    devices().cpld.reg[vb::kCpldWatchdog] = 1 << vb::kWatchdogPeriod.lowestBit;
    EXPECT_EQ(behind(1001), 1010 * kMs);
}

} // namespace
