// Clocks that are stepped.

#include "tests/time/ticking.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>

namespace {

class SteppingTest : public TickingTest {
  protected:
    std::vector<int32_t> users() const {
        VBoardUser *list = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(vboardUsers(board, &list, &count, nullptr), VBOARD_OK);
        const Given<VBoardUser> given(list);
        std::vector<int32_t> pids;
        for (uint32_t i = 0; i < count; ++i)
            pids.push_back(list[i].pid);
        return pids;
    }

    ControlAnswer advanceNs(uint64_t ns, uint64_t patience = VBOARD_USUAL_PATIENCE) const {
        return answerOf(
            [&](VBoardError *error) { return vboardAdvance(board, ns, patience, error); });
    }

    ControlAnswer expectProgram(int32_t process) const {
        return answerOf(
            [&](VBoardError *error) { return vboardExpectProgram(board, process, error); });
    }

    std::vector<std::string> trace() const {
        uint64_t position = 0;
        uint32_t count = 0;
        VBoardRequest *list = nullptr;
        EXPECT_EQ(vboardTrace(board, &position, 0, &list, &count, nullptr, nullptr), VBOARD_OK);
        const Given<VBoardRequest> given(list);
        std::vector<std::string> lines;
        for (uint32_t i = 0; i < count; ++i)
            lines.push_back(std::to_string(list[i].time) + " " + list[i].text);
        return lines;
    }
};

/** Ticks of a clock that runs so fast that a timer can expire twice before it is read. */
long countTicks(const std::string &output) {
    return std::count(output.begin(), output.end(), ' ') -
           std::count(output.begin(), output.end(), 'x');
}

TEST_F(SteppingTest, TheClockStandsUntilItIsAdvanced) {
    const auto program = startTicks("sleep", "1");
    EXPECT_EQ(now(), 0u);
    EXPECT_EQ(advanceNs(kSecond - 1), kDone);
    EXPECT_EQ(program->output(), "");
    EXPECT_EQ(advanceNs(1), kDone);
    EXPECT_EQ(program->wait().out, ticks(1));
    EXPECT_EQ(now(), kSecond);
}

TEST_F(SteppingTest, AllWaysSeeTheSameSeconds) {
    constexpr unsigned kSeconds = 25;
    std::vector<std::unique_ptr<Process>> programs;
    for (const char *way :
         {"sleep", "poll", "select", "epoll", "timerfd", "condition", "semaphore"})
        programs.push_back(startTicks(way, "1000"));
    EXPECT_EQ(advance(kSeconds), kDone);
    for (const auto &program : programs)
        EXPECT_EQ(program->output(), ticks(kSeconds));
    EXPECT_EQ(now(), kSeconds * kSecond);
}

TEST_F(SteppingTest, WhoIsDueAtOnceGoesOnInTurn) {
    const auto first = startTicks("poll", "3");
    const auto second = startTicks("condition", "3");
    EXPECT_EQ(advance(2), kDone);
    EXPECT_EQ(trace(), (std::vector<std::string>{
                           "0 step", "0 step", "1000000000 step, ends a wait for descriptors",
                           "1000000000 step, ends a wait for a lock",
                           "2000000000 step, ends a wait for descriptors",
                           "2000000000 step, ends a wait for a lock", "2000000000 step"}));
}

TEST_F(SteppingTest, TheSameRunGivesTheSameTrace) {
    std::vector<std::string> traces;
    for (const char *name : {"first", "second"}) {
        board = newBoard(name, "0x0709", "stepped");
        const auto sleeper = startTicks("sleep", "100");
        const auto timer = startTicks("timerfd", "100");
        const auto semaphore = startTicks("semaphore", "100");
        EXPECT_EQ(advance(20), kDone);
        EXPECT_EQ(advance(20), kDone);
        traces.push_back(
            run({builtProgram("vboard"), "trace", "--number-processes", path(name)}).out);
        const std::string json =
            run({builtProgram("vboard"), "trace", "--number-processes", "--json", path(name)}).out;
        EXPECT_NE(json.find("\"pid\":4,"), std::string::npos) << json.substr(0, 500);
        EXPECT_EQ(json.find("\"pid\":9"), std::string::npos);
    }
    EXPECT_EQ(linesOf(traces[0]).size(), 3u + 3 * 40 + 41 + 2); // sleeps are requests as well
    EXPECT_EQ(traces[0], traces[1]);
}

TEST_F(SteppingTest, AThreadThatDoesNotWaitIsNamed) {
    const auto busy = start("spin", "1");
    ASSERT_EQ(users().size(), 1u);
    const ControlAnswer answer = advanceNs(kSecond, kSecond / 20);
    EXPECT_EQ(answer.status, VBOARD_E_BUSY);
    EXPECT_NE(answer.text.find("(process " + std::to_string(users().front()) +
                               ") does not wait; the clock stands until it does"),
              std::string::npos)
        << answer.text;
    EXPECT_EQ(now(), 0u);
    busy->signal(SIGKILL);
    busy->wait();
    EXPECT_EQ(advance(1), kDone);
    EXPECT_EQ(now(), kSecond);
}

TEST_F(SteppingTest, AProcessWithTheNumberOfAProgramThatHasEndedIsNone) {
    Process stranger({builtProgram("tick"), "spin", "1"});
    ASSERT_TRUE(comesTrue([&] { return stranger.errors() == "ready\n"; }));
    EXPECT_EQ(expectProgram(stranger.pid()), kDone);
    EXPECT_EQ(advanceNs(kSecond, kSecond / 20), kDone);
    EXPECT_EQ(now(), kSecond);
}

TEST_F(SteppingTest, AProgramThatIsExpectedIsWaitedForBeforeItIsOnTheBoard) {
    Process program({builtProgram("tick"), "sleep", "3"}, boardEnvironment(vboardFolder(board)));
    EXPECT_EQ(expectProgram(program.pid()), kDone);
    EXPECT_EQ(advance(3), kDone);
    EXPECT_EQ(program.wait().out, ticks(3));
    for (const int32_t process : {0, -1})
        EXPECT_EQ(
            expectProgram(process),
            (ControlAnswer{VBOARD_E_ARGUMENT, "there is no process " + std::to_string(process)}));
}

TEST_F(SteppingTest, AProgramThatIsStoppedIsNamed) {
    const auto program = startTicks("sleep", "5");
    program->signal(SIGSTOP);
    const ControlAnswer answer = advanceNs(kSecond, kSecond / 20);
    EXPECT_EQ(answer.status, VBOARD_E_BUSY);
    EXPECT_NE(answer.text.find("is stopped; the clock stands until it does"), std::string::npos)
        << answer.text;
    program->signal(SIGCONT);
    EXPECT_EQ(advance(5), kDone);
    EXPECT_EQ(program->wait().out, ticks(5));
}

TEST_F(SteppingTest, ThoseWhoWereKilledAreForgotten) {
    const auto killed = startTicks("sleep", "100");
    const auto other = startTicks("poll", "2");
    killed->signal(SIGKILL);
    killed->wait();
    EXPECT_EQ(advance(2), kDone);
    EXPECT_EQ(other->wait().out, ticks(2));
    for (const std::string &line : trace())
        EXPECT_EQ(line.find("the clock"), std::string::npos) << line;
}

TEST_F(SteppingTest, AnotherPaceLetsEverybodyGoOn) {
    for (const char *way : {"sleep", "epoll", "semaphore", "condition"}) {
        SCOPED_TRACE(way);
        ASSERT_EQ(set({{"time", "stepped"}}), kDone);
        const auto program = startTicks(way, "20");
        EXPECT_EQ(advance(10), kDone);
        EXPECT_EQ(program->output(), ticks(10));
        ASSERT_EQ(set({{"time", "x1000"}}), kDone);
        EXPECT_EQ(countTicks(program->wait().out), 20);
    }
}

TEST_F(SteppingTest, ProgramsOfABoardThatIsRemovedGoOnByTheHostsClock) {
    std::vector<std::unique_ptr<Process>> programs;
    for (const char *way : {"sleep", "poll", "timerfd", "condition", "semaphore"})
        programs.push_back(startTicks(way, "2"));
    const std::string removed[] = {vboardFolder(board), path("slow")};
    board = newBoard("slow", "0x0709", "x0.001"); // a second takes a quarter of an hour
    programs.push_back(start("sleep", "2"));
    programs.push_back(start("condition", "2"));
    for (const std::string &folder : removed)
        std::filesystem::remove_all(folder);
    for (const auto &program : programs) {
        const ProcessResult result = program->wait();
        EXPECT_EQ(countTicks(result.out), 2) << result.out;
        EXPECT_EQ(result.exitCode, 0);
    }
}

TEST_F(SteppingTest, OverrunsOfTimersAreCounted) {
    Process program({builtProgram("overruns")}, boardEnvironment(vboardFolder(board)));
    EXPECT_TRUE(comesTrue([&] { return program.errors() == "ready\n"; }));
    EXPECT_EQ(advance(10), kDone);
    EXPECT_EQ(program.wait().out, "taken: 4 overruns\ntaken: 0 overruns\n");
}

/** As of the kernel: reads go on behind handlers that say so, and polls end in any case. */
TEST_F(SteppingTest, SignalsInterruptWaitsForTimersAsTheirActionsSay) {
    const std::string interrupted = ": -" + std::to_string(EINTR) + ", 1 handled\n";
    const std::string polls = "poll" + interrupted + "select" + interrupted + "epoll" + interrupted;
    for (const auto &[how, read] : std::map<std::string, std::string>{
             {"restart", "read: 8, 1 handled\n"}, {"no-restart", "read" + interrupted}}) {
        SCOPED_TRACE(how);
        Process program({builtProgram("interrupted"), how}, boardEnvironment(vboardFolder(board)));
        EXPECT_TRUE(comesTrue([&] { return program.errors() == "ready\n"; }));
        EXPECT_EQ(advance(100), kDone);
        EXPECT_EQ(program.wait().out, read + polls);
    }
}

TEST_F(SteppingTest, TheRateChangesWhileProgramsWait) {
    for (const char *way : {"sleep", "epoll", "semaphore", "condition"}) {
        SCOPED_TRACE(way);
        ASSERT_EQ(set({{"time", "x0.001"}}), kDone); // a second takes a quarter of an hour
        const auto program = start(way, "3");
        ASSERT_EQ(set({{"time", "x1000"}}), kDone);
        const ProcessResult result = program->wait();
        EXPECT_EQ(countTicks(result.out), 3) << result.out;
    }
}

TEST_F(SteppingTest, WaitsForAConditionMoveItAsProgramsDo) {
    const auto program = startTicks("poll", "1000");
    ASSERT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    EXPECT_EQ(wait("fan.1.speed == 0", 60 * kSecond), kDone);
    EXPECT_GT(now(), kSecond);
    EXPECT_EQ(program->output(), ticks(static_cast<unsigned>(now() / kSecond)));
    const uint64_t before = now();
    EXPECT_EQ(wait("fan.1.speed > 0", 3 * kSecond).status, VBOARD_E_TIMEOUT);
    EXPECT_EQ(now(), before + 3 * kSecond);
}

} // namespace
