// The example that shares a power budget among ports.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/words/poe_text.h"

namespace {

class PoePriorityTest : public VirtualBoardTest {
  protected:
    ProcessResult share(std::vector<std::string> words) const {
        words.insert(words.begin(), builtProgram("poe_priority"));
        return runOnBoard(boardFolder(), words);
    }
    /** The lines that a successful run prints. */
    Lines decisions(const std::vector<std::string> &words) const {
        const ProcessResult result = share(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return linesOf(result.out);
    }
    void expectRefused(const std::vector<std::string> &words, const std::string &message) {
        const ProcessResult result = share(words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, message + "\n");
        EXPECT_EQ(requests(), Lines{});
    }

    void plug(uint32_t port, const std::string &device) const {
        vb::poeSetDevice(devices().poe, port - 1, vb::parseDevice(device), now());
    }
    std::string stateOf(uint32_t port) const {
        vb::poeAdvance(devices().poe, now());
        return vb::phaseText(devices().poe.port[port - 1].phase);
    }
};

const std::string kInitialises = "controller: not initialised yet, which takes a minute";

TEST_F(PoePriorityTest, PowersAllThatFits) {
    plug(3, "class=4 requests=25500 draws=18000");
    plug(5, "class=2 requests=6000 draws=5500");
    EXPECT_EQ(decisions({"100", "5=2", "3=1", "7=3"}),
              (Lines{kInitialises, "port 3: priority 1, may draw 30.0 W: switched on",
                     "port 5: priority 2, may draw 7.0 W: switched on",
                     "port 3: priority 1, draws 18.0 W: stays on",
                     "port 5: priority 2, draws 5.5 W: stays on", "port 7: priority 3: no device",
                     "total: 23.5 of 100.0 W"}));
    EXPECT_EQ(stateOf(3), "delivering");
    EXPECT_EQ(stateOf(5), "delivering");
    EXPECT_EQ(stateOf(7), "idle");
}

TEST_F(PoePriorityTest, GivesALowBudgetToTheImportant) {
    for (const uint32_t port : {1u, 2u, 4u})
        plug(port, "class=4 requests=25500 draws=18000");
    EXPECT_EQ(decisions({"40", "1=3", "2=1", "4=2"}),
              (Lines{kInitialises, "port 2: priority 1, may draw 30.0 W: switched on",
                     "port 2: priority 1, draws 18.0 W: stays on",
                     "port 4: priority 2, may draw 30.0 W: stays off, over budget",
                     "port 1: priority 3, may draw 30.0 W: stays off, over budget",
                     "total: 18.0 of 40.0 W"}));
    EXPECT_EQ(stateOf(2), "delivering");
    EXPECT_EQ(stateOf(4), "held");
    EXPECT_EQ(stateOf(1), "held");
}

TEST_F(PoePriorityTest, HandsOnWhatDevicesDoNotDraw) {
    plug(1, "class=4 requests=25500 draws=10000");
    plug(2, "class=4 requests=25500 draws=10000");
    EXPECT_EQ(decisions({"45", "1=1", "2=1"}),
              (Lines{kInitialises, "port 1: priority 1, may draw 30.0 W: switched on",
                     "port 2: priority 1, may draw 30.0 W: switched on",
                     "port 1: priority 1, draws 10.0 W: stays on",
                     "port 2: priority 1, draws 10.0 W: stays on", "total: 20.0 of 45.0 W"}));
    EXPECT_EQ(stateOf(2), "delivering");
}

TEST_F(PoePriorityTest, SwitchesTheLeastImportantOffWhenTheTotalIsTooHigh) {
    for (const uint32_t port : {1u, 2u, 3u})
        plug(port, "class=4 requests=25500 draws=18000");
    decisions({"200", "1=1", "2=2", "3=3"});
    plug(1, "class=4 requests=25500 draws=29000");
    EXPECT_EQ(decisions({"50", "1=1", "2=2", "3=3"}),
              (Lines{"port 3: priority 3, draws 18.0 W: switched off",
                     "port 1: priority 1, draws 29.0 W: stays on",
                     "port 2: priority 2, draws 18.0 W: stays on",
                     "port 3: priority 3, may draw 30.0 W: stays off, over budget",
                     "total: 47.0 of 50.0 W"}));
    EXPECT_EQ(stateOf(1), "delivering");
    EXPECT_EQ(stateOf(2), "delivering");
    EXPECT_EQ(stateOf(3), "held");
}

TEST_F(PoePriorityTest, CountsPortsThatThePolicyDoesNotName) {
    plug(1, "class=4 requests=25500 draws=20000");
    plug(2, "class=4 requests=25500 draws=20000");
    EXPECT_EQ(decisions({"45", "2=1"}),
              (Lines{kInitialises, "port 2: priority 1, may draw 30.0 W: stays off, over budget",
                     "total: 20.0 of 45.0 W"}));
    EXPECT_EQ(stateOf(1), "delivering");
    EXPECT_EQ(stateOf(2), "held");
}

TEST_F(PoePriorityTest, LeavesFaultsAlone) {
    plug(1, "class=4 signature=short");
    plug(2, "class=4 over-current");
    plug(3, "class=4 signature=bad");
    EXPECT_EQ(decisions({"100", "1=1", "2=1", "3=1"}),
              (Lines{kInitialises, "port 2: priority 1, may draw 30.0 W: switched on",
                     "port 1: priority 1: left alone, has a fault",
                     "port 2: priority 1: left alone, has a fault", "port 3: priority 1: no device",
                     "total: 0.0 of 100.0 W"}));
    EXPECT_EQ(stateOf(1), "fault");
    EXPECT_EQ(stateOf(2), "fault");
}

TEST_F(PoePriorityTest, RefusesABadCommandLine) {
    const std::string usage = "usage: poe_priority BUDGET_WATTS PORT=PRIORITY...";
    const auto notAPort = [](const std::string &word) {
        return "poe_priority: '" + word + "' is not PORT=PRIORITY (1 to 48, 1 to 99)";
    };
    expectRefused({}, usage);
    expectRefused({"100"}, usage);
    for (const char *budget : {"0", "6001", "-5", "ten", "", "10W"})
        expectRefused({budget, "1=1"}, "poe_priority: a budget is 1 to 6000 watts, not '" +
                                           std::string(budget) + "'");
    for (const char *word : {"1", "0=1", "49=1", "1=0", "1=100", "1=", "=1", "1=1x", " 1=1"})
        expectRefused({"100", word}, notAPort(word));
    expectRefused({"100", "1=1", "1=2"}, "poe_priority: port 1 is named twice");
}

TEST_F(PoePriorityTest, SaysThatABoardHasNoPoe) {
    useModel(0x0109);
    const ProcessResult result = share({"100", "1=1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "poe_priority: ioPoeInitStatusGet: status -1100 (no PoE controller, or "
                          "it has no usable firmware)\n");
}

TEST_F(PoePriorityTest, SaysWhichCallFailed) {
    decisions({"100", "1=1"});
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, -5, 2));
    const ProcessResult result = share({"100", "1=1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "poe_priority: ioPoePortModeGet for port 1: status -1103 (the PoE "
                          "controller cannot be reached)\n");
}

} // namespace
