// The scenarios that come along: each plays on the board that it says it is for, and finds what is
// broken on purpose, in the line where that shows.

#include "tests/support/patterns.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

/** A change of a scenario, and the line in which the play has to fail then. */
struct Break {
    const char *scenario;
    const char *text, *other;
    const char *failsAt;
    const char *reason; // with which it fails
};

constexpr Break kBreaks[] = {
    {"start-up", "set.power = \"cycle\"", "set.fan.1.state = \"good\"",
     "expect = \"reset.reason == power-on", "reset.reason is none, rtc.battery is good"},
    {"start-up", "set.rtc.time = \"2026-03-01 08:00:00\"", "set.rtc.battery = \"empty\"",
     "expect = \"reset.reason == power-on", "reset.reason is power-on, rtc.battery is empty"},
    {"start-up", "\"--every\", \"6\"", "\"--every\", \"16\"",
     "expect = \"reset.reason == power-on\"", "reset.reason is watchdog"},
    {"start-up", "within = 11", "within = 9", "when = \"reset.reason == watchdog\"",
     "did not come true within 9 s: reset.reason is power-on"},
    {"poe-overload", "\"40000\"", "\"50000\"", "expect = \"poe.10.state == denied\"",
     "poe.10.state is delivering"},
    {"poe-overload", " over-current", "", "expect = \"poe.8.state == fault\"",
     "poe.8.state is delivering"},
    {"poe-overload", "and ports.1.fault == true", "and ports.1.fault == false",
     "run = [\"iodbg\", \"poe\", \"status\"", "ports.1.fault is true"},
    {"poe-overload", "set.poe.3.device = \"none\"", "set.poe.8.device = \"none\"",
     "expect = \"poe.10.state == delivering\"", "poe.10.state is denied"},
    {"sfp-swap", "set.sfp.49.rx-power = 0\n", "set.sfp.49.rx-power = 400\n",
     "expect = \"sfp.rx_loss == [49]\"", "sfp.rx_loss is []"},
    {"sfp-swap", "set.sfp.49.rx-power = 300", "set.sfp.49.rx-power = 299",
     "run = [\"iodbg\", \"sfp\", \"show\", \"49\", \"--json\"]\nexpect = \"diagnostics",
     "diagnostics.4.value is 299000"},
    {"sfp-swap", "set.sfp.49.state = \"dead\"", "set.sfp.49.state = \"tx-fault\"",
     "run = [\"iodbg\", \"sfp\", \"show\", \"49\", \"--json\"]\nexit",
     "it ended with 0, not with 1"},
    {"fan-failure", "set.fan.2.state = \"stuck\"", "set.fan.2.state = \"failing\"",
     "expect = \"fan.2.speed == 0\"", "fan.2.speed is 1200"},
    {"fan-failure", "\"fan\", \"set\", \"10\"", "\"fan\", \"set\", \"1\"",
     "expect = \"temperature.board <= 54\"", "temperature.board is 60.6"},
    {"fan-failure", "faults == 1 and", "faults == 2 and",
     "run = [\"iodbg\", \"check\", \"--json\"]\nexit = 5", "faults is 1"},
    {"supply-loss", "set.supply.1.input = \"failed\"", "set.supply.1.output = \"failed\"",
     "run = [\"iodbg\", \"power\", \"1\", \"--json\"]\nexpect = \"supply1.plugged",
     "supply1.input_voltage_mv is 230000"},
    {"supply-loss", "set.supply.1.input = \"good\"\n", "",
     "run = [\"iodbg\", \"power\", \"1\", \"--json\"]\nexpect = \"supply1.status == 0",
     "supply1.input_voltage_mv is 0"},
    {"power-cut", "nth = 40", "nth = 4000",
     "run = [\"iodbg\", \"upgrade\", \"os\", "
     "\"/tmp/bsp/os.img\", \"--bank\", \"1\", \"--yes\"]\n",
     "it ended with 0, not with 137"},
    {"power-cut", "exit = 137", "exit = 0",
     "run = [\"iodbg\", \"upgrade\", \"os\", \"/tmp/bsp/os.img\", \"--bank\", \"1\", \"--yes\"]\n",
     "it ended with 137, not with 0"},
};

class ScenariosTest : public ::testing::TestWithParam<const char *> {
  protected:
    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    static std::string content(const std::string &scenario) {
        std::ifstream file(std::string(BSP_TEST_SCENARIOS) + "/" + scenario + ".toml");
        std::stringstream text;
        text << file.rdbuf();
        EXPECT_FALSE(text.str().empty()) << scenario;
        return text.str();
    }

    /** Makes the board that the scenario says it is for, and plays it there. */
    ProcessResult play(const std::string &text) const {
        std::ofstream(path("x.toml")) << text;
        const size_t create = text.find("vboard create ");
        EXPECT_NE(create, std::string::npos);
        std::string line = text.substr(create, text.find('\n', create) - create);
        line = line.substr(0, line.find("  "));
        const std::string programs = fs::path(builtProgram("vboard")).parent_path().string();
        return run({"sh", "-c",
                    "cd \"$0\" && rm -rf board && " + line + " && exec vboard play board x.toml",
                    path("")},
                   {"PATH=" + programs + ":" + std::getenv("PATH")});
    }

  private:
    TemporaryFolder folder_;
};

TEST_P(ScenariosTest, PassesAsItIs) {
    const ProcessResult result = play(content(GetParam()));
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("\npassed: "), std::string::npos) << result.out;
}

TEST_P(ScenariosTest, FailsInTheLineWhereABreakShows) {
    size_t count = 0;
    for (const Break &row : kBreaks) {
        if (std::string(row.scenario) != GetParam())
            continue;
        ++count;
        std::string text = content(row.scenario);
        const size_t at = text.find(row.text);
        ASSERT_NE(at, std::string::npos) << row.text;
        text.replace(at, std::string(row.text).size(), row.other);
        const size_t failure = text.find(row.failsAt);
        ASSERT_NE(failure, std::string::npos) << row.failsAt;
        const auto line =
            1 + std::count(text.begin(), text.begin() + static_cast<long>(failure), '\n');
        const ProcessResult result = play(text);
        EXPECT_EQ(result.exitCode, 5) << row.text << "\n" << result.out;
        EXPECT_EQ(result.err.find("vboard: x.toml:" + std::to_string(line) + ": "), 0u)
            << row.text << "\n"
            << result.err;
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << row.text << "\n" << result.err;
    }
    EXPECT_GT(count, 1u);
}

constexpr const char *kScenarios[] = {"start-up",    "poe-overload", "sfp-swap",
                                      "fan-failure", "supply-loss",  "power-cut"};

INSTANTIATE_TEST_SUITE_P(, ScenariosTest, ::testing::ValuesIn(kScenarios),
                         [](const auto &row) { return replaced(row.param, "-", "_"); });

/** Those that are there are those that are tried, and told of. */
TEST(ScenariosListTest, EachIsTried) {
    std::set<std::string> found;
    for (const fs::directory_entry &file : fs::directory_iterator(BSP_TEST_SCENARIOS))
        found.insert(file.path().stem().string());
    EXPECT_EQ(found, (std::set<std::string>(std::begin(kScenarios), std::end(kScenarios))));
    std::ifstream file(std::string(BSP_TEST_SCENARIOS) + "/../README.md");
    std::stringstream page;
    page << file.rdbuf();
    for (const std::string &name : found)
        EXPECT_NE(page.str().find("`" + name + ".toml`"), std::string::npos) << name;
}

} // namespace
