// Waiting through the C interface: for changes, and for conditions.

#include "tests/control/held_board.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

class ControlWaitTest : public ControlTest {
  protected:
    ControlAnswer awaitChange(uint32_t since, uint64_t timeoutNs) const {
        return answerOf(
            [&](VBoardError *error) { return vboardAwaitChange(board, since, timeoutNs, error); });
    }
};

class ControlRealWaitTest : public ControlWaitTest {
  protected:
    void SetUp() override {
        ControlWaitTest::SetUp();
        ASSERT_EQ(set({{"time", "real"}}), kDone);
    }
};

constexpr uint64_t kLong = 60 * kSecond; // that no test waits for

TEST_F(ControlWaitTest, ForAChangeEndsWithIt) {
    const uint32_t before = vboardChanges(board);
    EXPECT_EQ(awaitChange(before, 1000000).status, VBOARD_E_TIMEOUT);
    std::thread hands([this] { EXPECT_EQ(set({{"fan.1.state", "stuck"}}), kDone); });
    EXPECT_EQ(awaitChange(before, kLong), kDone);
    hands.join();
    EXPECT_EQ(awaitChange(before, 0), kDone) << "what has changed already is not waited for";
}

TEST_F(ControlWaitTest, ForAChangeOfABoardThatIsGoneFails) {
    std::filesystem::remove_all(path("board"));
    EXPECT_EQ(awaitChange(vboardChanges(board), 1000000).status, VBOARD_E_GONE);
}

TEST_F(ControlWaitTest, EndsAtOnceWhenTheConditionHolds) {
    const uint64_t before = now();
    EXPECT_EQ(wait("fan.1.state == good", 0), kDone);
    EXPECT_EQ(now(), before);
}

TEST_F(ControlWaitTest, MovesAVirtualClockUpToTheMoment) {
    ASSERT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    ASSERT_NE(get("fan.1.speed"), "0");
    EXPECT_EQ(wait("fan.1.speed == 0", 20 * kSecond), kDone);
    EXPECT_EQ(get("fan.1.speed"), "0");
    // 2400 per minute are lost in steps of 60, each of which takes 100 ms.
    EXPECT_EQ(now(), 4 * kSecond);
}

TEST_F(ControlWaitTest, TellsWhatIsSoInsteadWhenTheTimeIsOver) {
    const ControlAnswer answer =
        wait("fan.1.state == stuck and fan.2.speed > 9000", 3 * kSecond / 2);
    EXPECT_EQ(answer.status, VBOARD_E_TIMEOUT);
    EXPECT_EQ(answer.text, "fan.1.state == stuck and fan.2.speed > 9000 did not come true within "
                           "1.5 s: fan.1.state is good, fan.2.speed is 2400");
    EXPECT_EQ(now(), 3 * kSecond / 2) << "not a moment longer";
}

TEST_F(ControlWaitTest, RefusesWhatIsNoCondition) {
    for (const char *wrong :
         {"", "fan.1.speed", "fan.1.speed =", "fan.9.speed == 0", "fan.1.state < good",
          "fan.1.state == broken", "fan.1.speed == fast", "model == '0x0709",
          "fan.1.speed == 0 xor fan.2.speed == 0", "fan.1.speed == 0 and"}) {
        const ControlAnswer answer = wait(wrong, kSecond);
        EXPECT_EQ(answer.status, VBOARD_E_REFUSED) << wrong << ": " << answer;
    }
    EXPECT_EQ(now(), 0u);
}

TEST_F(ControlRealWaitTest, SeesWhatOthersDo) {
    std::thread hands([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    });
    EXPECT_EQ(wait("fan.1.state == stuck", kLong), kDone);
    hands.join();
}

TEST_F(ControlRealWaitTest, SeesWhatTimeDoes) {
    ASSERT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    EXPECT_EQ(wait("fan.1.speed < 2300", kLong), kDone);
}

TEST_F(ControlRealWaitTest, EndsWithItsTime) {
    const uint64_t before = now();
    EXPECT_EQ(wait("fan.1.state == stuck", kSecond / 4).status, VBOARD_E_TIMEOUT);
    EXPECT_GE(now() - before, kSecond / 4);
}

class ControlTimeTest : public ControlTest {};

TEST_F(ControlTimeTest, OfAVirtualBoardIsMovedByHands) {
    ASSERT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    EXPECT_EQ(advance(2), kDone);
    EXPECT_EQ(now(), 2 * kSecond);
    EXPECT_EQ(get("fan.1.speed"), "1200");
    EXPECT_EQ(get("clock"), "2.000000000");
}

TEST_F(ControlTimeTest, OfARealBoardIsNot) {
    ASSERT_EQ(set({{"time", "real"}}), kDone);
    EXPECT_EQ(advance(1).status, VBOARD_E_REFUSED);
    EXPECT_LT(now(), 60 * kSecond);
}

} // namespace
