// Those who step a clock: one of them can be killed, and copies have clocks of their own.

#include "tests/time/ticking.h"

#include <csignal>
#include <memory>

namespace {

using SteppersTest = TickingTest;

constexpr char kForEver[] = "100000";

uint32_t usersOf(VBoard *board) {
    VBoardUser *list = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(vboardUsers(board, &list, &count, nullptr), VBOARD_OK);
    vboardFree(list);
    return count;
}

TEST_F(SteppersTest, AnotherGoesOnWhereOneWasKilled) {
    const auto timer = startTicks("timerfd", kForEver);
    const auto condition = startTicks("condition", kForEver);
    for (uint64_t round = 0; round < 5; ++round) {
        const uint64_t before = now();
        Process stepper({builtProgram("vboard"), "advance", vboardFolder(board), "90000"});
        // Each time somewhere else.
        EXPECT_TRUE(comesTrue([&] { return now() > before + (1 + 7 * round) * kSecond; }));
        stepper.signal(SIGKILL);
        EXPECT_EQ(stepper.wait().exitCode, 128 + SIGKILL);
        const uint64_t stopped = now();
        EXPECT_EQ(advance(3), kDone);
        EXPECT_EQ(now(), stopped + 3 * kSecond);
        EXPECT_EQ(timer->output(), ticks(now() / kSecond));
        EXPECT_EQ(condition->output(), ticks(now() / kSecond));
    }
}

TEST_F(SteppersTest, ACopyIsSteppedByItself) {
    const auto program = startTicks("poll", kForEver);
    EXPECT_EQ(advance(5), kDone);
    ASSERT_EQ(vboardCopy(vboardFolder(board), path("copy").c_str(), nullptr), VBOARD_OK);
    VBoard *copy = nullptr;
    ASSERT_EQ(vboardOpen(path("copy").c_str(), &copy, nullptr), VBOARD_OK);
    const auto timeOfCopy = [&] {
        uint64_t time = 0;
        EXPECT_EQ(vboardTime(copy, &time, nullptr), VBOARD_OK);
        return time;
    };
    EXPECT_EQ(timeOfCopy(), 5 * kSecond);
    EXPECT_EQ(usersOf(copy), 0u);
    EXPECT_EQ(usersOf(board), 1u);

    // It does not wait for a program of the board that it is a copy of, nor wakes it.
    program->signal(SIGSTOP);
    EXPECT_EQ(vboardAdvance(copy, 3 * kSecond, kSecond / 20, nullptr), VBOARD_OK);
    program->signal(SIGCONT);
    EXPECT_EQ(timeOfCopy(), 8 * kSecond);
    EXPECT_EQ(now(), 5 * kSecond);
    EXPECT_EQ(program->output(), ticks(5));
    EXPECT_EQ(advance(2), kDone);
    EXPECT_EQ(program->output(), ticks(7));
    EXPECT_EQ(timeOfCopy(), 8 * kSecond);
    vboardClose(copy);
}

} // namespace
