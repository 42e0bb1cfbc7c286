// Waits that are easily got wrong, natively: emulators have signals, descriptors and memory of
// their own, and end with some of the programs' mistakes.

#include "tests/time/waiters.h"
#include "virtual_board/control/threads.h"

namespace {

using NativeWaitersTest = WaitersTest;

TEST_F(NativeWaitersTest, AlarmsAreAProcesssOwn) {
    EXPECT_EQ(outputOf("forks"), "alarm of a child: 0 after 0.000000000\n"
                                 "its own: 0 after 2.000000000\n"
                                 "timer of its child: 0 after 2.000000000\n"
                                 "its timer: 0 after 7.000000000\n"
                                 "child: 0 after 7.000000000\n"
                                 "alarm: 0 after 10.000000000\n"
                                 "done\n");
}

TEST_F(NativeWaitersTest, RefusalsAreTheKernels) {
    constexpr size_t kCalls = sizeof(void *) == 4 ? 75 : 81; // without times at wild addresses
    const Process onHost({builtProgram("waiters"), "refusals"});
    const Process onBoard({builtProgram("waiters"), "refusals"},
                          boardEnvironment(vboardFolder(board)));
    for (const Process *program : {&onHost, &onBoard})
        EXPECT_TRUE(comesTrue([=] { return program->output().ends_with("done\n"); }))
            << program->output();
    const std::vector<std::string> calls = linesOf(onHost.output());
    EXPECT_EQ(linesOf(onBoard.output()), calls);
    EXPECT_EQ(calls.size(), kCalls);
    EXPECT_EQ(now(), 0u);
}

TEST_F(NativeWaitersTest, ThousandsOfDescriptorsAreAwaited) {
    EXPECT_EQ(outputOf("many"), "poll: 0 after 1.000000000\n"
                                "select: 0 after 1.000000000\n"
                                "epoll: 0 after 1.000000000\n"
                                "polls: 200 after 1.000000000\n"
                                "0 descriptors more, no more memory\n"
                                "write: 1 after 0.000000000\n"
                                "poll: 4000 after 0.000000000\n"
                                "select: 4000 after 0.000000000\n"
                                "epoll: 1 after 0.000000000\n"
                                "done\n");
}

TEST_F(NativeWaitersTest, WithoutAFreeDescriptorTimeIsTheSame) {
    EXPECT_EQ(outputOf("few"), "poll: 0 after 1.000000000\n"
                               "select: 0 after 2.000000000\n"
                               "epoll: 0 after 3.000000000\n"
                               "semaphore: 0 after 4.000000000\n"
                               "sleep: 0 after 5.000000000\n"
                               "timer: 1 after 6.000000000\n"
                               "dup: -1 after 6.000000000\n"
                               "limit: 40 after 6.000000000\n"
                               "done\n");
}

TEST_F(NativeWaitersTest, ThreadsThatAreCancelledLeaveNothingBehind) {
    EXPECT_EQ(outputOf("cancelled"), "0 descriptors more, no more memory\ndone\n");
}

/** Emulators have threads of their own. */
TEST(ThreadsTest, AllChildrenOfALargeCrowdAreFound) {
    constexpr size_t kChildren = 1000; // whose list is longer than a page
    Process parent({builtProgram("tick"), "crowd", std::to_string(kChildren)});
    EXPECT_TRUE(
        comesTrue([&] { return vboard::threadsOf({parent.pid()}).size() == 1 + kChildren; }));
    parent.signal(SIGKILL);
    parent.wait();
}

} // namespace
