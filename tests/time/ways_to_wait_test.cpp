// All ways in which programs wait, by each kind of time.

#include "tests/control/held_board.h"
#include "tests/support/document_part.h"
#include "tests/support/process.h"

#include <cstdlib>
#include <sstream>

namespace {

// As the program has them.
constexpr int kPaces = 1, kVirtual = 2, kHost = 4, kReal = 8;
constexpr size_t kAllWays = 84;
constexpr size_t kWaysOfProcessors = 2; // that emulators do not have
constexpr size_t kWaysOfVirtualTime = 5;

const size_t kWays = isEmulated() ? kAllWays - kWaysOfProcessors : kAllWays;

/** A kind of ways, as far as they are there. */
std::string kindOf(int follows) {
    return std::to_string(isEmulated() ? follows : follows | kReal);
}

/** How a wait went. */
struct Waited {
    std::string way, verdict;
    double own, host; // seconds that passed by the program's clock and by the host's
};

std::vector<Waited> waitsIn(const std::string &output) {
    std::vector<Waited> waits;
    for (const std::string &line : linesOf(output)) {
        std::istringstream stream(line);
        Waited waited = {};
        std::getline(stream, waited.way, '\t');
        std::getline(stream, waited.verdict, '\t');
        stream >> waited.own >> waited.host;
        waits.push_back(waited);
    }
    return waits;
}

class WaysToWaitTest : public ControlTest {
  protected:
    std::vector<Waited> tryAll(int follows, const char *seconds,
                               const std::vector<std::string> &systemClock = {}) const {
        std::vector<std::string> line = {builtProgram("ways_to_wait"), kindOf(follows), seconds};
        line.insert(line.end(), systemClock.begin(), systemClock.end());
        const ProcessResult result = runOnBoard(vboardFolder(board), line);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return waitsIn(result.out);
    }
};

TEST_F(WaysToWaitTest, ScaledTimePassesForAll) {
    ASSERT_EQ(set({{"time", "x100"}}), kDone);
    const std::vector<Waited> waits = tryAll(kPaces, "20");
    EXPECT_EQ(waits.size(), kWays);
    for (const Waited &waited : waits) {
        SCOPED_TRACE(waited.way);
        EXPECT_EQ(waited.verdict, "right");
        EXPECT_GE(waited.own, 20);
        EXPECT_NEAR(waited.own, waited.host * 100, 5); // which are read one after the other
    }
}

TEST_F(WaysToWaitTest, SlowTimeTakesLonger) {
    ASSERT_EQ(set({{"time", "x0.5"}}), kDone);
    const std::vector<Waited> waits = tryAll(kPaces, "1");
    EXPECT_EQ(waits.size(), kWays);
    for (const Waited &waited : waits) {
        SCOPED_TRACE(waited.way);
        EXPECT_EQ(waited.verdict, "right");
        EXPECT_GE(waited.own, 1);
        EXPECT_GE(waited.host, 2);
    }
}

TEST_F(WaysToWaitTest, SteppedTimePassesToTheNanosecond) {
    ASSERT_EQ(set({{"time", "stepped"}}), kDone);
    Process program({builtProgram("ways_to_wait"), kindOf(kPaces), "20"},
                    boardEnvironment(vboardFolder(board)));
    const auto isOver = [&] { return waitsIn(program.output()).size() == kWays; };
    ASSERT_TRUE(comesTrue([&] {
        EXPECT_EQ(advance(30), kDone);
        return isOver();
    }));
    for (const Waited &waited : waitsIn(program.output())) {
        SCOPED_TRACE(waited.way);
        EXPECT_EQ(waited.verdict, "right");
        EXPECT_EQ(waited.own, 20);
    }
}

TEST_F(WaysToWaitTest, PlainSleepsAreOverAtOnceWhereTimeIsVirtual) {
    const std::vector<Waited> waits = tryAll(kVirtual, "600");
    EXPECT_EQ(waits.size(), kWaysOfVirtualTime);
    for (const Waited &waited : waits)
        EXPECT_LT(waited.host, 300) << waited.way;
    EXPECT_EQ(get("clock"), "3000.000000000");
}

TEST_F(WaysToWaitTest, OthersTakeTheirTimeWhereItIsVirtual) {
    const std::vector<Waited> waits = tryAll(kHost, "1");
    EXPECT_EQ(waits.size(), kWays - kWaysOfVirtualTime);
    for (const Waited &waited : waits) {
        SCOPED_TRACE(waited.way);
        EXPECT_EQ(waited.verdict, "right");
        EXPECT_GE(waited.host, 1);
    }
    EXPECT_EQ(get("clock"), "0.000000000");
}

TEST_F(WaysToWaitTest, AllTakeTheirTimeWhereItIsReal) {
    ASSERT_EQ(set({{"time", "real"}}), kDone);
    const std::vector<Waited> waits = tryAll(kPaces, "1");
    EXPECT_EQ(waits.size(), kWays);
    for (const Waited &waited : waits) {
        SCOPED_TRACE(waited.way);
        EXPECT_EQ(waited.verdict, "right");
        EXPECT_GE(waited.host, 1);
    }
}

/** Once a program has set the system clock, points of it are points of the board's. */
TEST_F(WaysToWaitTest, PointsOfASystemClockThatWasSetBackAreAwaited) {
    for (const char *time : {"real", "virtual"}) {
        SCOPED_TRACE(time);
        ASSERT_EQ(set({{"time", time}}), kDone);
        const std::vector<Waited> waits = tryAll(kHost, "1", {"1000000"});
        EXPECT_EQ(waits.size(), kWays - kWaysOfVirtualTime);
        for (const Waited &waited : waits) {
            SCOPED_TRACE(waited.way);
            EXPECT_EQ(waited.verdict, "right");
            EXPECT_GE(waited.host, 1);
            EXPECT_LT(waited.host, 30);
        }
    }
}

/** What a wait goes by. */
std::string clockText(bool isBoards) {
    return isBoards ? "the board's" : "the host's";
}

TEST(WaysToWaitTableTest, IsWhatTheProgramTries) {
    std::string table = "| way | `real` | `virtual` | `x60`, `stepped` |\n|---|---|---|---|\n";
    const std::vector<std::string> rows = linesOf(run({builtProgram("ways_to_wait"), "list"}).out);
    EXPECT_EQ(rows.size(), kAllWays);
    for (const std::string &row : rows) {
        const size_t tab = row.find('\t');
        const int follows = std::stoi(row.substr(0, tab));
        table += "| " + row.substr(tab + 1) + " | " + clockText(false) + " | " +
                 clockText((follows & kVirtual) != 0) + " | " + clockText((follows & kPaces) != 0) +
                 " |\n";
    }
    expectPart({BSP_TEST_DOCUMENTS "/virtual-board.md", "<!-- ways to wait -->\n",
                "<!-- end of the ways to wait -->\n"},
               table);
}

} // namespace
