// Steps that need no program, and the board's judgement of scenarios.

#include "language/refused.h"
#include "tests/support/files.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/command/player.h"
#include "virtual_board/command/scenario_check.h"
#include "virtual_board/command/scenario_file.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vboard;
namespace fs = std::filesystem;

constexpr uint64_t kSecond = 1000000000;

class PlayerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        VBoardOptions options = *vboardUsualOptions();
        options.model = "0x0709";
        options.time = "virtual";
        call([&](VBoardError *error) { return vboardCreate(folder().c_str(), &options, error); });
        board_ = std::make_unique<Board>(folder());
    }

    std::string folder() const { return folder_.path() + "/board"; }

    std::string get(const std::string &name) const {
        return board_->properties({name}).begin()->value;
    }

    uint32_t countOfFaults() const {
        VBoardFault *faults = nullptr;
        uint32_t count = 0;
        call([&](VBoardError *error) { return vboardFaults(*board_, &faults, &count, error); });
        vboardFree(faults);
        return count;
    }

    /** Plays steps; why it ended too early, or nothing. */
    std::string play(const std::string &steps) {
        const Scenario scenario = parseScenario("x.toml", steps);
        Player player(*board_);
        for (const Step &step : scenario.steps) {
            try {
                player.play(step);
            } catch (const std::exception &failure) {
                return std::to_string(step.place.line) + ": " + failure.what();
            }
        }
        passedNs_ = player.passedNs();
        return "";
    }

    std::string check(const std::string &steps) const {
        try {
            checkScenario(parseScenario("x.toml", steps), folder());
        } catch (const language::Refused &refused) {
            return refused.what();
        }
        return "";
    }

    std::unique_ptr<Board> board_;
    uint64_t passedNs_ = 0;

  private:
    const TemporaryFolder folder_;
};

TEST_F(PlayerTest, PropertiesAreSetAllOrNone) {
    EXPECT_EQ(play("[[step]]\nset.sfp.49.module = \"sr\"\nset.sfp.49.link = \"up\"\n"), "");
    EXPECT_EQ(get("sfp.49.link"), "up");
    EXPECT_EQ(play("[[step]]\nset.fan.1.state = \"stuck\"\nset.sfp.50.link = \"up\"\n"),
              "2: sfp.50.link: cage 50 is empty; plug a module first: sfp.50.module sr");
    EXPECT_EQ(get("fan.1.state"), "good");
}

TEST_F(PlayerTest, FaultsAreAddedAndRemovedByTheirNames) {
    const std::string two = "[[step]]\nfault = { device = \"cpld\", effect = \"no-answer\" }\n"
                            "as = \"a\"\n"
                            "[[step]]\nfault = { device = \"gpio\", op = \"read\", offset = 3, nth "
                            "= 2, when = \"every\", effect = \"refuse=-5\" }\n";
    EXPECT_EQ(play(two), "");
    EXPECT_EQ(countOfFaults(), 2u);
    VBoardFault *faults = nullptr;
    uint32_t count = 0;
    ASSERT_EQ(vboardFaults(*board_, &faults, &count, nullptr), VBOARD_OK);
    EXPECT_STREQ(faults[1].text,
                 "--device gpio --op read --offset 3 --nth 2 --when every --effect refuse=-5");
    vboardFree(faults);
    EXPECT_EQ(play("[[step]]\nclear = \"all\"\n"), "");
    EXPECT_EQ(countOfFaults(), 0u);
    EXPECT_EQ(play(two + "[[step]]\nclear = \"a\"\n"), "");
    ASSERT_EQ(vboardFaults(*board_, &faults, &count, nullptr), VBOARD_OK);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(faults[0].device, "gpio");
    vboardFree(faults);
}

TEST_F(PlayerTest, AStepWaitsForItsMoment) {
    ASSERT_EQ(play("[[step]]\nadvance = 2.5\n"), "");
    EXPECT_EQ(passedNs_, kSecond * 5 / 2);
    EXPECT_EQ(get("clock"), "2.500000000");
    ASSERT_EQ(play("[[step]]\nat = 10\nset.fan.1.state = \"stuck\"\n"
                   "[[step]]\nafter = 0.000000001\n"
                   "[[step]]\nat = 10\n"), // which is over
              "");
    EXPECT_EQ(passedNs_, 10 * kSecond + 1);
    EXPECT_EQ(get("clock"), "12.500000001");
    EXPECT_EQ(get("fan.1.speed"), "2400"); // it has only just stopped
    ASSERT_EQ(play("[[step]]\nwhen = \"fan.1.speed == 0\"\nset.fan.1.state = \"good\"\n"), "");
    EXPECT_EQ(passedNs_, 4 * kSecond - 1);
    EXPECT_EQ(get("fan.1.state"), "good");
    EXPECT_EQ(play("[[step]]\nwhen = \"fan.1.speed == 9\"\nwithin = 3\nset.fan.1.state = "
                   "\"stuck\"\n"),
              "4: fan.1.speed == 9 did not come true within 3 s: fan.1.speed is 1800");
    EXPECT_EQ(get("fan.1.state"), "good"); // the step was not done
    EXPECT_EQ(play("[[step]]\nwhen = \"fan.1.speed == 9\"\n"),
              "2: fan.1.speed == 9 did not come true within 60 s: fan.1.speed is 2400");
}

TEST_F(PlayerTest, WhatIsExpectedHoldsAtOnceOrInTime) {
    EXPECT_EQ(play("[[step]]\nexpect = \"fan.1.speed == 2400 and power == on\"\n"), "");
    EXPECT_EQ(play("[[step]]\nset.fan.1.state = \"stuck\"\n"
                   "[[step]]\nexpect = \"fan.1.speed == 0\"\n"),
              "4: fan.1.speed == 0 did not come true within 0 s: fan.1.speed is 2400");
    EXPECT_EQ(play("[[step]]\nexpect = \"fan.1.speed == 0\"\nwithin = 4\n"), "");
    EXPECT_EQ(play("[[step]]\nexpect = \"fan.1.speed == 1\"\nwithin = 4\n"),
              "2: fan.1.speed == 1 did not come true within 4 s: fan.1.speed is 0");
}

TEST_F(PlayerTest, RealTimeIsWaitedFor) {
    ASSERT_EQ(play("[[step]]\nset.time = \"real\"\n[[step]]\nat = 0.02\n"
                   "[[step]]\nafter = 0.02\n[[step]]\nwhen = \"clock > 0.05\"\n"),
              "");
    EXPECT_GE(passedNs_, kSecond / 20);
    EXPECT_EQ(play("[[step]]\nadvance = 1\n").substr(0, 43),
              "2: the board's time moves by itself; set 't");
}

TEST_F(PlayerTest, ABoardThatIsGoneEndsThePlay) {
    Player player(*board_);
    removeFolder(folder());
    const Scenario scenario = parseScenario("x.toml", "[[step]]\nset.fan.1.state = \"stuck\"\n");
    EXPECT_THROW(player.play(scenario.steps[0]), CallFailed);
}

TEST_F(PlayerTest, ABoardRefusesWhatItCannotHaveAndIsNotTouched) {
    const std::string wrong = "[[step]]\n"
                              "set.fan.1.stat = \"stuck\"\n"
                              "set.temperature.ambient = 400\n"
                              "set.fan.3.state = \"stuck\"\n"
                              "set.fan.2.speed = 1\n"
                              "set.sfp.49.module = \"sr\"\n"
                              "set.sfp.49.link = \"up\"\n"
                              "set.sfp.50.link = \"up\"\n"
                              "[[step]]\nwhen = \"fan.1.sped == 0\"\n"
                              "[[step]]\nfault = { device = \"cpld\", effect = \"short=1\" }\n"
                              "as = \"a\"\n"
                              "[[step]]\nclear = \"a\"\n"
                              "[[step]]\nrun = [\"no-such-program\"]\n"
                              "[[step]]\nrun = [\"/made/by/another/step\"]\n"
                              "[[step]]\nexpect = \"sfp.49.link == up and fan.1.state == lost\"\n"
                              "[[step]]\nset.time = \"real\"\n"
                              "[[step]]\nadvance = 1\n";
    const uint32_t changes = vboardChanges(*board_);
    EXPECT_EQ(
        check(wrong),
        "x.toml:2:11: there is no property 'fan.1.stat'; 'vboard get DIR' lists them (did "
        "you mean 'fan.1.state'?)\n"
        "x.toml:3:17: temperature.ambient: '400' is not a number from -40 to 85 (decimal, or "
        "hexadecimal after 0x)\n"
        "x.toml:4:11: there is no fan.3.state; the numbers are 1 to 2\n"
        "x.toml:5:11: fan.2.speed can only be read\n"
        "x.toml:8:12: sfp.50.link: cage 50 is empty; plug a module first: sfp.50.module sr\n"
        "x.toml:10:8: there is no property 'fan.1.sped'; 'vboard get DIR' lists them (did "
        "you mean 'fan.1.speed'?)\n"
        "x.toml:12:1: the CPLD cannot have the effect short=1; it can have refuse, ioctl-fails, "
        "no-answer and corrupt; for short give --device i2c\n"
        "x.toml:17:1: there is no program 'no-such-program' in the folders of PATH\n"
        "x.toml:21:10: fan.1.state: 'lost' is none of its words: good, failing, stuck or held\n"
        "x.toml:25:1: the board's time moves by itself; set 'time' to virtual or stepped first");
    EXPECT_EQ(vboardChanges(*board_), changes);
    EXPECT_EQ(get("sfp.49.module"), "none");
    EXPECT_EQ(countOfFaults(), 0u);
}

TEST_F(PlayerTest, ABoardIsJudgedAsItIs) {
    const std::string link = "[[step]]\nset.sfp.49.link = \"up\"\n";
    EXPECT_NE(check(link), "");
    ASSERT_EQ(play("[[step]]\nset.sfp.49.module = \"sr\"\n"), "");
    EXPECT_EQ(check(link), "");
    EXPECT_EQ(get("sfp.49.link"), "down");
}

TEST_F(PlayerTest, TheCopyThatIsTriedIsRemoved) {
    const TemporaryFolder place;
    const char *before = std::getenv("TMPDIR");
    const std::string kept = before != nullptr ? before : "";
    setenv("TMPDIR", place.path().c_str(), 1);
    EXPECT_EQ(check("[[step]]\nset.fan.1.state = \"stuck\"\n"), "");
    EXPECT_NE(check("[[step]]\nset.fan.1.state = \"lost\"\n"), "");
    EXPECT_TRUE(pathsUnder(place.path()).empty());
    setenv("TMPDIR", (place.path() + "/none").c_str(), 1);
    EXPECT_NE(check("[[step]]\nadvance = 1\n").find("cannot make a folder for a copy"),
              std::string::npos);
    before != nullptr ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
}

} // namespace
