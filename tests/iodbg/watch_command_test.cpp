// iodbg watch.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"

#include <cerrno>
#include <chrono>
#include <csignal>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class WatchCommandTest : public IodbgTest {
  protected:
    /** The lines of so many rounds. */
    Words rounds(const std::string &count, int exitCode = 0) const {
        const ProcessResult result = iodbg({"watch", "--json", "--count", count});
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        return linesOf(result.out);
    }
    void waitUntilSlept(uint64_t seconds) const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (*const_cast<volatile uint64_t *>(&board().clock.anchorNs) < seconds * 1000000000u)
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    }
};

TEST_F(WatchCommandTest, ShowsARoundForPeople) {
    useModel(0x0309);
    world::set("rtc.time", "2051-02-28 12:34:56");
    world::set("sfp.26.module", "sr");
    world::set("supply.2.present", "no");
    const ProcessResult result = iodbg({"watch", "--count", "1"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const Words lines = linesOf(result.out);
    EXPECT_TRUE(
        matches(lines.at(0), "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}  0 faults, [0-9] warnings"))
        << lines.at(0);
    for (const char *text :
         {"\nSFP port 26     warning     no signal arrives\n",
          "\nclock           warning     2051-02-28 12:34:5", "\nClimate\n  Temperature       ",
          "\n  Fan level (1-10)  1\n", "\nFAN  PRESENT",
          "\nSUPPLY  PLUGGED  STATUS\n1       yes      0\n2       no       3\n",
          "\nSFP cages\n  Modules in         26\n  Loss of signal     26\n"
          "  Transmitter fault  none\n",
          "\nClock\n  Clock chip (local time)    2051-02-28 12:34:56\n", "\nFront panel\n"})
        EXPECT_NE(result.out.find(text), std::string::npos) << text << "\n" << result.out;
    EXPECT_EQ(result.out.find("PoE"), std::string::npos) << "the model has none";
}

TEST_F(WatchCommandTest, AnswersProgramsInLines) {
    const Words lines = rounds("2");
    ASSERT_EQ(lines.size(), 2u);
    for (const std::string &line : lines) {
        EXPECT_EQ(jsonKeys(line, ""),
                  (Words{"event", "time", "findings", "climate", "fans", "supplies", "poe", "sfp",
                         "clock", "panel", "failures"}));
        EXPECT_EQ(jsonAt(line, "/event"), "\"round\"");
        EXPECT_EQ(jsonAt(line, "/climate"), "{\"temperature_c\":40,\"fan_level\":1}");
        EXPECT_EQ(jsonAt(line, "/fans/0"), "{\"fan\":1,\"present\":true,\"speed_rpm\":2400}");
        EXPECT_EQ(jsonAt(line, "/supplies/1"), "{\"supply\":2,\"plugged\":true,\"status\":0}");
        EXPECT_EQ(jsonKeys(line, "/poe"), (Words{"controller_present", "budget_mw", "drawn_mw",
                                                 "ports_on", "ports_asked"}));
        EXPECT_EQ(jsonAt(line, "/sfp"), "{\"plugged\":[],\"rx_loss\":[],\"tx_fault\":[]}");
        EXPECT_EQ(jsonKeys(line, "/panel"),
                  (Words{"register_7", "system", "lamp4", "lamp5", "indexed_on"}));
        EXPECT_EQ(jsonKeys(line, "/findings/0"), (Words{"subject", "verdict", "found", "advice",
                                                        "code", "unit", "index", "cause"}));
        EXPECT_EQ(jsonAt(line, "/findings/0/found"), "\"not initialised\"") << "not what is good";
    }
}

TEST_F(WatchCommandTest, WhatChangesIsSeen) {
    useModel(0x8609);
    Process process = start({"watch", "--json", "--interval", "3600"});
    waitUntilSlept(3600);
    world::set("fan.1.present", "no");
    world::set("sfp.3.module", "sr");
    waitUntilSlept(now() / 1000000000u + 3 * 3600);
    process.signal(SIGINT);
    const Words lines = linesOf(process.wait().out);
    EXPECT_EQ(jsonAt(lines.front(), "/sfp/plugged"), "[]");
    EXPECT_EQ(jsonAt(lines.back(), "/sfp/plugged"), "[3]");
    EXPECT_EQ(jsonAt(lines.back(), "/sfp/rx_loss"), "[3]");
    EXPECT_EQ(jsonAt(lines.back(), "/fans/0/speed_rpm"), "0");
    EXPECT_EQ(jsonAt(lines.back(), "/findings/0/found"), "\"stands still or is not there\"");
}

TEST_F(WatchCommandTest, LooksAtSomePartsOnly) {
    iodbg({"show"}); // from here on the model is known
    world::set("fan.1.present", "no");
    world::set("supply.2.present", "no");
    trace();
    const std::string round =
        linesOf(iodbg({"watch", "--json", "--count", "1", "--only", "fans,climate"}).out).at(0);
    EXPECT_EQ(jsonKeys(round, ""),
              (Words{"event", "time", "findings", "climate", "fans", "failures"}));
    EXPECT_EQ(jsonAt(round, "/findings/0/subject"), "\"fan 1\"");
    EXPECT_EQ(round.find("supply 2"), std::string::npos);
    for (const std::string &request : requests())
        EXPECT_EQ(request.find("PoE"), std::string::npos) << request << ": it is not asked";
    expectRefusal({"watch", "--only", "fans,lamps"}, 2,
                  "--only: 'lamps' is none of climate|fans|supplies|poe|sfp|clock|panel");
    expectRefusal({"watch", "--only", "fans,"}, 2, "--only: '' is none of");
}

TEST_F(WatchCommandTest, ChangesAreALineEach) {
    useModel(0x8609);
    Process process = start({"watch", "--changes", "--json", "--interval", "3600", "--only",
                             "fans,sfp,clock,supplies"});
    waitUntilSlept(3600);
    world::set("fan.1.present", "no");
    world::set("sfp.3.module", "sr");
    waitUntilSlept(now() / 1000000000u + 2 * 3600);
    world::set("fan.1.present", "yes");
    waitUntilSlept(now() / 1000000000u + 2 * 3600);
    process.signal(SIGINT);
    const ProcessResult result = process.wait();
    EXPECT_EQ(result.exitCode, 0);
    Words told;
    for (const std::string &line : linesOf(result.out)) {
        if (jsonAt(line, "/event") == "\"change\"")
            told.push_back(jsonAt(line, "/item") + " " + jsonAt(line, "/before") + " " +
                           jsonAt(line, "/after"));
    }
    EXPECT_EQ(jsonKeys(linesOf(result.out).at(0), ""),
              (Words{"event", "time", "values", "failures"}));
    for (const char *line :
         {"\"fans.1.speed_rpm\" 2400 0", "\"fans.1.speed_rpm\" 0 2400", "\"sfp.plugged\" [] [3]",
          "\"findings.fan 1\" \"good\" \"fault: stands still or is not there\"",
          "\"findings.fan 1\" \"fault: stands still or is not there\" \"good\"",
          "\"findings.SFP port 3\" \"good\" \"warning: no signal arrives\""})
        EXPECT_EQ(std::count(told.begin(), told.end(), line), 1) << line << "\n" << result.out;
    EXPECT_EQ(result.out.find("clock.chip"), std::string::npos) << "time passes by itself";
}

TEST_F(WatchCommandTest, WhatWaversIsNoChange) {
    Process process =
        start({"watch", "--changes", "--json", "--interval", "3600", "--only", "climate"});
    const auto warmer = [&] {
        world::set("temperature.ambient",
                   std::to_string(std::stoi(world::get("temperature.ambient")) + 1));
        waitUntilSlept(now() / 1000000000u + 2 * 3600);
    };
    waitUntilSlept(3600);
    const int sensed = std::stoi(world::get("temperature.sensor"));
    warmer();
    warmer();
    process.signal(SIGINT);
    const Words lines = linesOf(process.wait().out);
    ASSERT_EQ(lines.size(), 2u) << "one degree is nothing";
    EXPECT_EQ(jsonAt(lines[1], "/item"), "\"climate.temperature_c\"");
    EXPECT_EQ(jsonAt(lines[1], "/before"), std::to_string(sensed));
    EXPECT_EQ(jsonAt(lines[1], "/after"), std::to_string(sensed + 2));
}

TEST_F(WatchCommandTest, WhatIsFoundIsToldOnceWhateverItsWordsMeasure) {
    useModel(0x8609);
    world::set("rtc.time", "2051-02-28 12:00:00"); // which the words of what is found tell
    const auto toldOf = [&](const std::string &item, const char *interval) {
        const ProcessResult result = iodbg({"watch", "--changes", "--json", "--count", "3",
                                            "--interval", interval, "--only", "clock"});
        const Words lines = linesOf(result.out);
        return std::count_if(lines.begin(), lines.end(), [&item](const std::string &line) {
            return line.find("\"item\":\"" + item + "\"") != std::string::npos;
        });
    };
    EXPECT_EQ(toldOf("findings.clock", "60"), 1);
    EXPECT_EQ(toldOf("clock.drift_s", "60"), 2) << "the system clock is the host's";
    EXPECT_EQ(toldOf("clock.drift_s", "0.4"), 0);
}

TEST_F(WatchCommandTest, ChangesBeginWithWhatIsWrong) {
    world::set("fan.1.present", "no");
    const ProcessResult result = iodbg({"watch", "--changes", "--count", "2", "--only", "fans"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Words lines = linesOf(result.out);
    ASSERT_GT(lines.size(), 1u);
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}  ";
    EXPECT_TRUE(matches(lines[0], time + "[0-9]+ values are watched")) << lines[0];
    EXPECT_TRUE(matches(lines[1], time + "findings.fan 1: good -> fault: it or its neighbour.*"))
        << lines[1];
    const size_t count = lines.size();
    EXPECT_EQ(linesOf(iodbg({"watch", "--changes", "--count", "3", "--only", "fans"}).out).size(),
              count)
        << "what stays as it is is told once";
    const std::string shown =
        iodbgOnTerminal({"watch", "--changes", "--count", "1", "--only", "fans"});
    EXPECT_NE(shown.find("\x1b[7;31m2"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("\x1b[H"), std::string::npos) << "nothing is redrawn";
}

TEST_F(WatchCommandTest, PortsThatAreAskedOneByOneAreNoChanges) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    world::set("poe.8.device", "class=4 draws=18000");
    world::set("time", "virtual");
    const ProcessResult result =
        iodbg({"watch", "--changes", "--json", "--count", "15", "--only", "poe"});
    EXPECT_EQ(result.out.find("ports_on"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("ports_asked"), std::string::npos) << result.out;
}

TEST_F(WatchCommandTest, SleepsBetweenTheRoundsAlone) {
    useModel(0x0309);
    const auto slept = [&](const Words &options) {
        Words words = {"watch"};
        words.insert(words.end(), options.begin(), options.end());
        trace();
        EXPECT_EQ(iodbg(words).exitCode, 0);
        Lines sleeps;
        for (const std::string &line : trace()) {
            if (line.starts_with("sleep ") && line != "sleep 1000 us")
                sleeps.push_back(line);
        }
        return sleeps;
    };
    EXPECT_EQ(slept({"--count", "3"}), (Lines{"sleep 2000000 us", "sleep 2000000 us"}));
    EXPECT_EQ(slept({"--count", "2", "--interval", "0.1"}), Lines{"sleep 100000 us"});
    EXPECT_EQ(slept({"--count", "2", "--interval", "1.25"}),
              (Lines{"sleep 1000000 us", "sleep 250000 us"}));
    EXPECT_EQ(slept({"--count", "1", "--interval", "3600"}), Lines{});
}

TEST_F(WatchCommandTest, AsksAFewPoePortsEachRound) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    world::set("poe.8.device", "class=4 draws=18000");
    const uint64_t before = now();
    const Words lines = rounds("13");
    ASSERT_EQ(lines.size(), 13u);
    EXPECT_EQ(jsonAt(lines[0], "/poe/ports_on"), "[]");
    EXPECT_EQ(jsonAt(lines[0], "/poe/ports_asked"), "4");
    EXPECT_EQ(jsonAt(lines[2], "/poe/ports_on"), "[8]");
    EXPECT_EQ(jsonAt(lines[11], "/poe/ports_asked"), "48");
    EXPECT_EQ(jsonAt(lines[12], "/poe/ports_asked"), "48") << "it begins again";
    EXPECT_EQ(jsonAt(lines[12], "/poe/ports_on"), "[8]");
    EXPECT_EQ(jsonAt(lines[12], "/poe/drawn_mw"), "18000");
    EXPECT_LT(now() - before, (13 * 1500 + 12 * 2000) * 1000000ull) << "a round takes 1.4 s";
}

TEST_F(WatchCommandTest, ASilentPoeControllerIsNotAskedForItsPorts) {
    iodbg({"show"});
    addFault(silence(FaultDevice::Poe, FaultOp::Write));
    const Words lines = rounds("1", 1);
    EXPECT_EQ(jsonAt(lines[0], "/poe"),
              "{\"controller_present\":true,\"budget_mw\":null,\"drawn_mw\":null}");
    clearFaults();
    world::set("poe.controller", "missing");
    EXPECT_EQ(jsonAt(rounds("1")[0], "/poe"), "{\"controller_present\":false}");
}

TEST_F(WatchCommandTest, WhatCannotBeReadEndsNothing) {
    useModel(0x0309);
    iodbg({"show"}); // from here on the model is known
    vb::FaultRule once = at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, 1), 8);
    once.when = vb::FaultWhen::Once;
    addFault(once);
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, 7), 28));
    const Words lines = rounds("2", 1);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(jsonAt(lines[0], "/failures"), "[]");
    EXPECT_NE(lines[0].find("SFP port 25"), std::string::npos) << "among the findings";
    EXPECT_EQ(jsonAt(lines[1], "/failures/0/item"), "\"fan1.speed_rpm\"");
    EXPECT_EQ(jsonAt(lines[1], "/fans/0/speed_rpm"), "null");
    EXPECT_EQ(jsonAt(lines[1], "/supplies/0/plugged"), "true");
}

TEST_F(WatchCommandTest, TheLastRoundDecidesTheExitCode) {
    useModel(0x0309);
    iodbg({"show"});
    vb::FaultRule once = at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, 3), 28);
    once.when = vb::FaultWhen::Once; // the findings have read it twice, for fan 1 and fan 2
    addFault(once);
    const Words lines = rounds("2");
    EXPECT_EQ(jsonAt(lines.at(0), "/failures/0/item"), "\"fan1.speed_rpm\"");
    EXPECT_EQ(jsonAt(lines.at(1), "/failures"), "[]");
}

TEST_F(WatchCommandTest, AnUnknownModelIsAskedAgain) {
    vb::FaultRule once = openFails("/tmp/bsp/devId", EACCES);
    once.when = vb::FaultWhen::Once;
    addFault(once);
    const Words lines = rounds("2");
    EXPECT_EQ(jsonAt(lines.at(0), "/model"), "{\"device_id\":null}");
    EXPECT_EQ(jsonAt(lines.at(0), "/findings/0/verdict"), "\"fault\"");
    EXPECT_EQ(jsonAt(lines.at(1), "/climate/fan_level"), "1");
}

TEST_F(WatchCommandTest, AMissingKernelModuleIsAllThatARoundTells) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    const ProcessResult result = iodbg({"watch", "--count", "2", "--json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "") << "the library is not asked, and prints nothing";
    const Words lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(jsonAt(lines[1], "/findings/0/code"), "\"kernel-module-missing\"");
    EXPECT_EQ(jsonAt(lines[1], "/findings/1/cause"), "\"kernel-module-missing\"");
    EXPECT_EQ(jsonAt(lines[1], "/model"), "{\"device_id\":null}");
    EXPECT_EQ(jsonAt(lines[1], "/findings/0/advice"), "\"load the board's kernel module\"");
    EXPECT_EQ(jsonAt(lines[1], "/failures"), "[]") << "nothing was asked, so nothing failed";
    clearFaults();
    EXPECT_EQ(jsonAt(rounds("1")[0], "/climate/fan_level"), "1");
}

TEST_F(WatchCommandTest, ACpldThatDrivesNoLinesIsAskedNothing) {
    devices().cpld.reg[1] = 0;
    const std::string round = rounds("1", 1)[0];
    EXPECT_EQ(jsonAt(round, "/findings/0/code"), "\"cpld-no-answer\"");
    EXPECT_EQ(jsonAt(round, "/model"), "{\"device_id\":null}");
    EXPECT_EQ(jsonAt(round, "/failures"), "[]");
    const ProcessResult shown = iodbg({"watch", "--count", "1"});
    EXPECT_EQ(shown.exitCode, 1);
    EXPECT_TRUE(shown.out.ends_with("\n\nModel\n  Device id  not asked\n\n")) << shown.out;
}

TEST_F(WatchCommandTest, AnotherModelsLinesAreShownAndNotJudged) {
    devices().cpld.reg[1] = 0x1234;
    const std::string round = rounds("1")[0];
    EXPECT_EQ(jsonKeys(round, "/findings").size(), 1u);
    EXPECT_EQ(jsonAt(round, "/findings/0/code"), "\"model-unknown\"");
    EXPECT_EQ(jsonAt(round, "/climate/temperature_c"), "40");
}

TEST_F(WatchCommandTest, ASilentBusIsOneFinding) {
    for (const uint32_t device : {0x4Fu, 0x51u}) {
        vb::FaultRule rule = silence(FaultDevice::I2c, FaultOp::Any);
        rule.hasAddress = 1;
        rule.channel = 1;
        rule.devAddr = device;
        addFault(rule);
    }
    const std::string round = rounds("1", 1)[0];
    EXPECT_EQ(jsonAt(round, "/findings/0/code"), "\"i2c-bus-no-answer\"");
    for (const char *finding : {"/findings/1/cause", "/findings/3/cause"})
        EXPECT_EQ(jsonAt(round, finding), "\"i2c-bus-no-answer\"") << round;
}

TEST_F(WatchCommandTest, CtrlCEndsItWell) {
    for (const Words &command : {Words{"watch"}, Words{"watch", "--json"}}) {
        const uint64_t before = now() / 1000000000u;
        Process process = start(command);
        waitUntilSlept(before + 10);
        process.signal(SIGINT);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(result.out.ends_with("\n")) << "a round is shown whole";
    }
}

TEST_F(WatchCommandTest, IsDrawnInPlaceOnATerminal) {
    world::set("fan.1.present", "no");
    const std::string shown = iodbgOnTerminal({"watch", "--count", "2"});
    const std::string home = "\x1b[H\x1b[1m2";
    const size_t second = shown.rfind(home);
    EXPECT_EQ(shown.find(home), 0u) << shown;
    EXPECT_NE(second, 0u);
    EXPECT_EQ(shown.substr(second - 3, 3), "\x1b[J") << "what was below is cleared";
    EXPECT_EQ(shown.substr(shown.size() - 3), "\x1b[J");
    EXPECT_NE(shown.find("\n\x1b[7;31mfan 1           FAULT       it or its neighbour is missing"),
              std::string::npos)
        << shown;
    EXPECT_NE(shown.find("\n\x1b[1;33mPoE controller  warning     not init"), std::string::npos)
        << shown;
    const std::string picture = shown.substr(second);
    EXPECT_EQ(std::count(picture.begin(), picture.end(), '\n'), 23)
        << "24 rows, one for the cursor";
    EXPECT_NE(picture.find(" more lines: the terminal is too small)"), std::string::npos);
    for (const std::string &line : linesOf(withoutEscapes(picture)))
        EXPECT_LE(line.size(), 80u) << line;
}

TEST_F(WatchCommandTest, TheHeadStaysInViewOnASmallTerminal) {
    const std::string shown = iodbgOnTerminal({"watch", "--count", "1"}, {}, {20, 60});
    const Words lines = linesOf(withoutEscapes(shown));
    ASSERT_EQ(lines.size(), 19u) << "20 rows, one for the cursor" << shown;
    EXPECT_TRUE(lines[0].ends_with(" warnings")) << shown;
    EXPECT_TRUE(lines[2].starts_with("SUBJECT ")) << shown;
    EXPECT_TRUE(lines[18].ends_with(" more lines: the terminal is too small)")) << shown;
    for (const std::string &line : lines)
        EXPECT_LE(line.size(), 60u);
}

TEST_F(WatchCommandTest, AnyTerminalHasItsHead) {
    for (const auto &[rows, columns] : {std::pair<unsigned short, unsigned short>{1, 1}, {3, 5}}) {
        const Words lines = linesOf(
            withoutEscapes(iodbgOnTerminal({"watch", "--count", "1"}, {}, {rows, columns})));
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[0].size(), columns);
        EXPECT_EQ(lines[0].back(), '>') << "the line goes on";
    }
}

TEST_F(WatchCommandTest, ATerminalThatCannotRedrawGetsLines) {
    world::set("fan.1.present", "no");
    const std::string shown =
        iodbgOnTerminal({"watch", "--count", "2"}, {}, {24, 80, {"TERM=dumb"}});
    EXPECT_EQ(shown.find('\x1b'), std::string::npos) << shown;
    EXPECT_NE(shown.find("\nFront panel"), std::string::npos) << "all of a round";
    const size_t head = shown.find(" warnings\r\n\r\nSUBJECT");
    EXPECT_NE(head, std::string::npos) << shown;
    EXPECT_NE(shown.find(" warnings\r\n\r\nSUBJECT", head + 1), std::string::npos) << shown;
}

TEST_F(WatchCommandTest, ColoursAreLeftOutOnRequest) {
    world::set("fan.1.present", "no");
    const auto shownWith = [&](const std::string &variable) {
        return iodbgOnTerminal({"watch", "--count", "1"}, {}, {24, 80, {"TERM=xterm", variable}});
    };
    const char *emphasis = "\x1b\\[[0-9;]*m";
    EXPECT_TRUE(hasMatch(shownWith("NO_COLOR="), emphasis)) << "empty is as if not there";
    const std::string plain = shownWith("NO_COLOR=1");
    EXPECT_FALSE(hasMatch(plain, emphasis)) << plain;
    EXPECT_EQ(plain.find("\x1b[H"), 0u) << "it is redrawn in place all the same";
}

TEST_F(WatchCommandTest, CtrlCOnATerminalEndsTheLine) {
    const std::string shown =
        iodbgOnTerminal({"watch", "--interval", "1"}, {"\x1b[J", std::string(1, '\x03')});
    EXPECT_TRUE(shown.ends_with("\r\n")) << shown.substr(shown.size() - 20);
}

TEST_F(WatchCommandTest, RefusesWrongWords) {
    for (const char *interval : {"0", "0.099", "3600.001", "-1", "x", "1.", ".5", "1.2345", "1e1",
                                 "0x2", "1.5.2", "99999999999999999999", "+1", " 1"})
        expectRefusal({"watch", "--count", "1", "--interval=" + std::string(interval)}, 2,
                      "--interval: '" + std::string(interval) +
                          "' is not a number of seconds from 0.1 to 3600");
    expectRefusal({"watch", "--count", "0"}, 2, "--count: '0' is not a number from 1");
    expectRefusal({"watch", "now"}, 2, "now");
}

} // namespace
