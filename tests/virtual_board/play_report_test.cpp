// What is printed of a play, letter by letter.

#include "virtual_board/command/play_report.h"
#include "virtual_board/command/scenario_file.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vboard;

constexpr char kFile[] = "title = \"a day\"\n"
                         "[[step]]\nset.fan.1.state = \"stuck\"\n"
                         "[[step]]\ntitle = \"it stands\"\nwhen = \"fan.1.speed == 0\"\n"
                         "[[step]]\nrun = \"\"\"\na\nb\"\"\"\nexpect = \"x == 1\"\n"
                         "[[step]]\nat = 60\n";

class PlayReportTest : public ::testing::Test {
  protected:
    const Scenario scenario_ = parseScenario("day.toml", kFile);

    const Step &step(size_t index) const { return scenario_.steps.at(index); }
};

TEST_F(PlayReportTest, AStepIsALine) {
    EXPECT_EQ(stepLine({&step(0), 1, 0, ""}),
              "      0.000  passed  line 3    set fan.1.state = stuck\n");
    EXPECT_EQ(stepLine({&step(1), 2, 12345678901, ""}),
              "     12.345  passed  line 6    it stands\n");
    EXPECT_EQ(stepLine({&step(2), 3, 100000000000000, "why"}),
              " 100000.000  FAILED  line 8    run a\\x0Ab, expect x == 1\n");
    EXPECT_EQ(stepLine({&step(3), 4, 1, ""}), "      0.000  passed  line 13   at 60 s\n");
    EXPECT_EQ(underWay(step(0)), "             ...     line 3    set fan.1.state = stuck");
}

TEST_F(PlayReportTest, AStepIsAnObject) {
    EXPECT_EQ(stepJson({&step(0), 1, 5, ""}),
              R"({"event":"step","step":1,"line":3,"title":null,"does":"set",)"
              R"("text":"set fan.1.state = stuck","moment":null,"time_ns":5,"passed":true,)"
              R"("reason":null})"
              "\n");
    EXPECT_EQ(stepJson({&step(1), 2, 60000000000, "it \"was\" not"}),
              R"({"event":"step","step":2,"line":6,"title":"it stands","does":"wait",)"
              R"("text":"wait","moment":"when fan.1.speed == 0","time_ns":60000000000,)"
              R"("passed":false,"reason":"it \"was\" not"})"
              "\n");
    EXPECT_NE(stepJson({&step(2), 3, 0, ""}).find(R"("text":"run a\nb, expect x == 1")"),
              std::string::npos);
}

TEST_F(PlayReportTest, TheVerdictIsALineOrAnObject) {
    const Outcome good = {nullptr, 4, 61500000000, ""};
    EXPECT_EQ(verdictLine(scenario_, good), "passed: 4 steps, 61.500 s on the board's clock\n");
    EXPECT_EQ(verdictJson(scenario_, good),
              R"({"event":"verdict","file":"day.toml","title":"a day","steps":4,"steps_passed":4,)"
              R"("time_ns":61500000000,"passed":true,"line":null,"reason":null})"
              "\n");
    const Outcome bad = {&step(1), 1, 0, "no"};
    EXPECT_EQ(verdictLine(scenario_, bad),
              "FAILED: day.toml:6, 1 of 4 steps passed, 0.000 s on the board's clock\n");
    EXPECT_EQ(verdictJson(scenario_, bad),
              R"({"event":"verdict","file":"day.toml","title":"a day","steps":4,"steps_passed":1,)"
              R"("time_ns":0,"passed":false,"line":6,"reason":"no"})"
              "\n");
}

} // namespace
