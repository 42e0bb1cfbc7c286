// Waits that are easily got wrong.

#include "tests/time/waiters.h"

namespace {

TEST_F(WaitersTest, ASignalForAThreadThatIsCancelledGoesToAnother) {
    EXPECT_EQ(outputOf("pass-on"), "passed on 30 times\ndone\n");
}

TEST_F(WaitersTest, TimersAreReadAndAwaitedInAllWays) {
    EXPECT_EQ(outputOf("timers"), "read: 1 after 1.000000000\n"
                                  "readv: 1 after 2.000000000\n"
                                  "poll of a copy: 1 after 3.000000000\n"
                                  "done\n");
}

TEST_F(WaitersTest, VectorsOfSocketsHaveTheirTimeOuts) {
    EXPECT_EQ(outputOf("sockets"), "readv: -1 after 1.000000000\n"
                                   "writev: -1 after 2.000000000\n"
                                   "done\n");
}

TEST_F(WaitersTest, ChildrenThatHaveEndedAreNotWaitedFor) {
    EXPECT_EQ(outputOf("zombies"), "sleep: 0 after 1.000000000\n"
                                   "sleep: 0 after 2.000000000\n"
                                   "done\n");
}

} // namespace
