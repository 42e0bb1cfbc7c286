// Events come at once, whatever the time is, and none is lost.

#include "tests/control/held_board.h"
#include "tests/support/process.h"

#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

// Held back until somebody looks again, each would take milliseconds.
constexpr unsigned kRounds = 4000;
constexpr std::chrono::seconds kLong(20);

struct Case {
    const char *time, *way;
};

void PrintTo(const Case &value, std::ostream *out) {
    *out << value.time << " " << value.way;
}

class EventsTest : public ControlTest, public ::testing::WithParamInterface<Case> {
  protected:
    EventsTest() : ControlTest("0x0709", GetParam().time) {}
};

TEST_P(EventsTest, ComeAtOnce) {
    const auto began = Clock::now();
    const ProcessResult result = runOnBoard(
        vboardFolder(board), {builtProgram("ping_pong"), GetParam().way, std::to_string(kRounds)});
    EXPECT_EQ(result.out, "done\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_LT(Clock::now() - began, kLong);
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const char *time : {"virtual", "x1000", "x0.001", "stepped"}) {
        for (const char *way :
             {"condition", "semaphore", "poll", "select", "epoll", "signal", "queue", "futex"})
            cases.push_back({time, way});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(AllTimes, EventsTest, ::testing::ValuesIn(allCases()));

} // namespace
