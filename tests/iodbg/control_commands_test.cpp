// iodbg led, watchdog, reboot and ptp.

#include "tests/iodbg/iodbg_test.h"

#include <cerrno>
#include <chrono>
#include <csignal>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class ControlTest : public IodbgTest {
  protected:
    uint16_t &reg(uint32_t number) const { return devices().cpld.reg[number]; }

    /** Wrong usage, which must not even ask the board. */
    void expectUntouched(const Words &arguments, const std::string &text) {
        trace();
        expectRefusal(arguments, 2, text);
        EXPECT_EQ(trace(), Lines{}) << ::testing::PrintToString(arguments);
    }
};

using LedCommandsTest = ControlTest;
using WatchdogCommandsTest = ControlTest;
using RebootCommandTest = ControlTest;
using PtpCommandsTest = ControlTest;

TEST_F(LedCommandsTest, ShowsTheLampsForPeople) {
    reg(7) = 0x8293; // system 1, lamp 4, indexed 2, 4 and 10
    reg(13) = 0x000C;
    reg(14) = 0x0000;
    reg(15) = 0xFFFF;
    const std::string text = "Front panel\n"
                             "  CPLD register 7   0x8293\n"
                             "  System lamp       1\n"
                             "  Lamp 4            on\n"
                             "  Lamp 5            off\n"
                             "  Indexed lamps on  2, 4, 10\n"
                             "\n"
                             "PoE ports\n"
                             "  Number of ports   48\n"
                             "  CPLD register 13  0x000C\n"
                             "  CPLD register 14  0x0000\n"
                             "  CPLD register 15  0xFFFF\n"
                             "  Port LEDs on      1-2, 5-32\n";
    EXPECT_EQ(iodbg({"led"}).out, text);
    const ProcessResult result = iodbg({"led", "get"});
    EXPECT_EQ(result.out, text);
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(LedCommandsTest, ShowsTheLampsForPrograms) {
    useModel(0x0809);
    reg(7) = 0x0062; // system 2, lamp 5, indexed 1
    reg(13) = 0x7FFE;
    reg(14) = 0x00FF;
    EXPECT_EQ(jsonAt(json({"led"}), ""),
              "{\"panel\":{\"register_7\":98,\"system\":2,\"lamp4\":0,\"lamp5\":1,"
              "\"indexed_on\":[1]},\"poe\":{\"ports\":24,\"register_13\":32766,"
              "\"register_14\":255,\"ports_on\":[1,16]},\"failures\":[]}");
}

TEST_F(LedCommandsTest, AModelWithoutPoeHasNoPortLeds) {
    useModel(0x0309);
    iodbg({"led"});
    trace();
    const ProcessResult result = iodbg({"led"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("\n\nPoE ports\n  Number of ports  0\n"), std::string::npos);
    EXPECT_EQ(requests(), Lines{"CPLD read  reg 7 (lamps) = 0x0000"});
    EXPECT_EQ(jsonAt(json({"led"}), "/poe"), "{\"ports\":0}");
}

TEST_F(LedCommandsTest, ShowingWritesNothing) {
    iodbg({"led"}); // from here on the model is known
    trace();
    iodbg({"led", "get"});
    EXPECT_EQ(requests(),
              (Lines{"CPLD read  reg 7 (lamps) = 0x0000", "CPLD read  reg 13 (PoE lamps) = 0xFFFF",
                     "CPLD read  reg 14 (PoE lamps) = 0xFFFF",
                     "CPLD read  reg 15 (PoE lamps) = 0xFFFF"}));
}

TEST_F(LedCommandsTest, ARegisterThatFailsDoesNotHideTheOthers) {
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 14));
    const std::string answer = json({"led"}, 1);
    EXPECT_EQ(jsonAt(answer, "/panel/system"), "0");
    EXPECT_EQ(jsonAt(answer, "/poe"),
              "{\"ports\":48,\"register_13\":65535,\"register_14\":null,\"register_15\":65535}");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"poe.register_14\"");
    clearFaults();
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 7));
    EXPECT_EQ(jsonAt(json({"led"}, 1), "/panel"), "{\"register_7\":null}");
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(jsonAt(json({"led"}, 1), "/poe"), "{\"ports\":null}");
}

TEST_F(LedCommandsTest, SetsTheSystemLamp) {
    struct Row {
        const char *state;
        const char *shown;
        uint16_t content;
    };
    for (const Row &row : {Row{"1", "1", 0xFFFF}, Row{"2", "2", 0xFFFE}, Row{"3", "3", 0xFFFD},
                           Row{"0", "off", 0xFFFC}, Row{"off", "off", 0xFFFC}}) {
        for (const char *kind : {"system", "1"}) {
            reg(7) = 0xFFFC | (~row.content & 3);
            EXPECT_EQ(iodbg({"led", "set", kind, row.state}).out,
                      "LED    system\nState  " + std::string(row.shown) + "\n");
            EXPECT_EQ(reg(7), row.content) << row.state;
        }
    }
}

TEST_F(LedCommandsTest, SetsTheOtherLampsOfTheFrontPanel) {
    struct Row {
        Words lamp;
        uint16_t bit;
    };
    for (const Row &row :
         {Row{{"lamp4"}, 0x0010}, Row{{"4"}, 0x0010}, Row{{"lamp5"}, 0x0020}, Row{{"5"}, 0x0020},
          Row{{"indexed", "1"}, 0x0040}, Row{{"7", "10"}, 0x8000}}) {
        for (const char *state : {"on", "1", "off", "0"}) {
            const bool isOn = state[1] == 'n' || state[0] == '1';
            reg(7) = isOn ? 0 : 0xFFFF;
            Words words = {"led", "set"};
            words.insert(words.end(), row.lamp.begin(), row.lamp.end());
            words.emplace_back(state);
            EXPECT_EQ(jsonAt(json(words), "/state"), isOn ? "1" : "0");
            EXPECT_EQ(reg(7), isOn ? row.bit : static_cast<uint16_t>(~row.bit));
        }
    }
}

TEST_F(LedCommandsTest, ThePortLedsAreActiveLow) {
    reg(15) = 0x0000;
    EXPECT_EQ(iodbg({"led", "set", "poe", "17", "on"}).out, "LED    poe\nIndex  17\nState  on\n");
    EXPECT_EQ(reg(14), 0xFFFE);
    EXPECT_EQ(jsonAt(json({"led", "set", "9", "48", "off"}), ""),
              "{\"led\":\"poe\",\"index\":48,\"state\":0,\"failures\":[]}");
    EXPECT_EQ(reg(15), 0x8000);
}

TEST_F(LedCommandsTest, WritesAndReadsBackOneRegister) {
    trace();
    iodbg({"led", "set", "lamp4", "on"});
    EXPECT_EQ(requests(),
              (Lines{"CPLD read  reg 7 (lamps) = 0x0000", "CPLD write reg 7 (lamps) = 0x0010",
                     "CPLD read  reg 7 (lamps) = 0x0010"}));
}

TEST_F(LedCommandsTest, DetectsALampThatDoesNotFollow) {
    addFault(silence(FaultDevice::Cpld, FaultOp::Write));
    expectFailure({"led", "set", "lamp5", "on"}, 3,
                  {"LED lamp5 was set to on, and CPLD register 7 says off; another program"});
    expectFailure({"led", "set", "poe", "33", "on"}, 3,
                  {"LED poe 33 was set to on, and CPLD register 15 says off"});
    expectFailure({"led", "set", "system", "1"}, 3, {"was set to 1, and"});
}

TEST_F(LedCommandsTest, ReportsFailures) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, -EIO));
    expectFailure({"led", "set", "indexed", "3", "on"}, 1,
                  {"cannot set LED indexed 3: status -5, an answer of the kernel module"});
    clearFaults();
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, 2), 7));
    expectFailure({"led", "set", "lamp4", "on"}, 1, {"cannot read back CPLD register 7"});
}

TEST_F(LedCommandsTest, APortThatTheModelDoesNotHaveIsNotTouched) {
    for (const auto &[devId, port, exitCode, status] :
         {std::tuple{0x0809u, "25", 2, "BSP_E_INVALID (1002)"},
          std::tuple{0x0309u, "1", 1, "BSP_E_NOT_SUPPORTED (1000)"}}) {
        useModel(devId);
        const BoardContent before = content();
        expectFailure({"led", "set", "poe", port, "off"}, exitCode, {"cannot set LED poe", status});
        EXPECT_TRUE(content() == before);
    }
}

TEST_F(LedCommandsTest, RefusesWrongWords) {
    expectUntouched({"led", "set"}, "see 'iodbg led set --help'");
    expectUntouched({"led", "set", "lamp6", "on"}, "'lamp6' is none of system|lamp4");
    expectUntouched({"led", "set", "2", "on"}, "'2' is none of system|lamp4");
    expectUntouched({"led", "set", "system"}, "STATE is required");
    expectUntouched({"led", "set", "system", "4"}, "STATE: '4' is none of off|0|1|2|3");
    expectUntouched({"led", "set", "system", "on"}, "STATE: 'on' is none of off|0|1|2|3");
    expectUntouched({"led", "set", "lamp4", "2"}, "STATE: '2' is none of off|on|0|1");
    expectUntouched({"led", "set", "lamp5", "red"}, "STATE: 'red'");
    expectUntouched({"led", "set", "lamp4", "1", "on"}, "not expected");
    expectUntouched({"led", "set", "indexed", "on"}, "LAMP: 'on' is not a number from 1 to 10");
    expectUntouched({"led", "set", "indexed", "0", "on"}, "LAMP: '0'");
    expectUntouched({"led", "set", "indexed", "11", "on"}, "LAMP: '11'");
    expectUntouched({"led", "set", "indexed", "1"}, "STATE is required");
    expectUntouched({"led", "set", "poe", "0", "on"}, "PORT: '0' is not a number from 1 to 48");
    expectUntouched({"led", "set", "poe", "49", "on"}, "PORT: '49'");
    expectUntouched({"led", "sow"}, "'sow' is none of get|set; see 'iodbg led --help'");
}

TEST_F(WatchdogCommandsTest, GetsThePeriod) {
    EXPECT_EQ(iodbg({"watchdog", "get"}).out, "Period  0\nArmed   no\n");
    reg(4) = 63 << 2;
    trace();
    EXPECT_EQ(jsonAt(json({"watchdog", "get"}), ""),
              "{\"period\":63,\"armed\":true,\"failures\":[]}");
    EXPECT_EQ(requests(), Lines{"CPLD read  reg 4 (watchdog) = 0x00FC"});
}

TEST_F(WatchdogCommandsTest, SetsAndStops) {
    trace();
    EXPECT_EQ(iodbg({"watchdog", "set", "10"}).out,
              "Period  10\nArmed   yes: something must feed it\n");
    EXPECT_EQ(requests(), (Lines{"CPLD write reg 4 (watchdog) = 0x0028",
                                 "CPLD read  reg 4 (watchdog) = 0x0028"}));
    EXPECT_EQ(iodbg({"watchdog", "stop"}).out, "Period  0\nArmed   no\n");
    EXPECT_EQ(reg(4), 0);
    EXPECT_EQ(jsonAt(json({"watchdog", "set", "0x3F"}), "/period"), "63");
    EXPECT_EQ(jsonAt(json({"watchdog", "set", "0"}), "/armed"), "false");
}

TEST_F(WatchdogCommandsTest, DetectsAPeriodThatReadsBackDifferently) {
    reg(4) = 5 << 2;
    addFault(silence(FaultDevice::Cpld, FaultOp::Write));
    expectFailure({"watchdog", "set", "9"}, 3, {"period 9 was written, and it reads 5"});
    expectFailure({"watchdog", "stop"}, 3, {"period 0 was written, and it reads 5"});
}

TEST_F(WatchdogCommandsTest, ReportsFailures) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, -EIO));
    expectFailure({"watchdog", "set", "9"}, 1, {"cannot set the watchdog's period: status -5"});
    expectFailure({"watchdog", "stop"}, 1, {"cannot stop the watchdog: status -5"});
    clearFaults();
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO));
    for (const Words &command : {Words{"watchdog", "get"}, Words{"watchdog", "set", "9"}})
        expectFailure(command, 1, {"cannot read the watchdog's period: status -5"});
    clearFaults();
    addFault(refuse(FaultDevice::Gpio, FaultOp::Read, -EIO));
    expectFailure({"watchdog", "feed"}, 1, {"cannot read the watchdog's line, GPIO 0: status -5"});
}

TEST_F(WatchdogCommandsTest, FeedsOnce) {
    trace();
    EXPECT_EQ(iodbg({"watchdog", "feed"}).out, "Feeds  1\n");
    EXPECT_EQ(trace(), (Lines{"GPIO read   line 0 = 0", "GPIO read   line 0 = 0",
                              "GPIO output line 0 = 1", "GPIO read   line 0 = 1"}));
    EXPECT_EQ(iodbg({"watchdog", "feed"}).exitCode, 0);
    EXPECT_EQ(devices().gpio.driven[0], 0);
}

TEST_F(WatchdogCommandsTest, FeedsAgainAndAgain) {
    reg(4) = 3 << 2;
    EXPECT_EQ(jsonAt(json({"watchdog", "feed", "--every", "2", "--count", "4"}), ""),
              "{\"feeds\":4,\"failures\":[]}");
    EXPECT_EQ(now(), 6000000000u) << "it sleeps between the feeds alone";
    EXPECT_EQ(devices().resets, 0u);

    EXPECT_EQ(iodbg({"watchdog", "feed", "--every", "4", "--count", "2"}).exitCode, 0);
    EXPECT_EQ(devices().resets, 1u) << "too slow for this period";
}

TEST_F(WatchdogCommandsTest, FeedsUntilItIsStopped) {
    // Ctrl-C is its proper end.
    for (const auto &[signal, exitCode] : {std::pair{SIGINT, 0}, {SIGTERM, 128 + SIGTERM}}) {
        reg(4) = 2 << 2;
        const uint64_t enough = now() + 20000000000u;
        Process process = start({"watchdog", "feed", "--every", "1"});
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (*const_cast<volatile uint64_t *>(&board().clock.anchorNs) < enough)
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        process.signal(signal);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.err, "iodbg: feeding every 1 s until this program is stopped\n");
        EXPECT_EQ(devices().resets, 0u);
    }
}

TEST_F(WatchdogCommandsTest, DetectsALineThatDoesNotFollow) {
    addFault(silence(FaultDevice::Gpio, FaultOp::Write));
    expectFailure({"watchdog", "feed"}, 3, {"the watchdog's line, GPIO 0, stayed at 0; check"});
    clearFaults();
    vb::FaultRule rule = silence(FaultDevice::Gpio, FaultOp::Write);
    rule.nth = 3;
    addFault(rule);
    const Words feed = {"watchdog", "feed", "--every", "1", "--count", "5"};
    expectFailure(feed, 3, {"stayed at 0"});
    EXPECT_EQ(now(), 2000000000u) << "two feeds went well";
}

TEST_F(WatchdogCommandsTest, RefusesWrongWords) {
    expectUntouched({"watchdog"}, "see 'iodbg watchdog --help'");
    expectUntouched({"watchdog", "set"}, "PERIOD is required");
    expectUntouched({"watchdog", "set", "64"}, "PERIOD: '64' is not a number from 0 to 63");
    expectUntouched({"watchdog", "set", "-1"}, "is not a number");
    expectUntouched({"watchdog", "set", "ten"}, "PERIOD: 'ten'");
    expectUntouched({"watchdog", "feed", "--every", "0"}, "--every: '0' is not a number from 1");
    expectUntouched({"watchdog", "feed", "--every", "3601"}, "--every: '3601'");
    expectUntouched({"watchdog", "feed", "--every", "1", "--count", "0"}, "--count: '0'");
    expectUntouched({"watchdog", "feed", "--every", "1", "--count", "x"}, "--count: 'x'");
    expectUntouched({"watchdog", "feed", "--count", "2"}, "--count needs --every");
    expectUntouched({"watchdog", "stop", "1"}, "not expected");
    expectUntouched({"watchdog", "get", "1"}, "not expected");
}

TEST_F(WatchdogCommandsTest, TheHelpWarns) {
    EXPECT_NE(iodbg({"watchdog", "set", "--help"})
                  .out.find("arms the watchdog: unless something feeds it from then on"),
              std::string::npos);
}

TEST_F(RebootCommandTest, ResetsWithoutAQuestionWhenTold) {
    trace();
    const ProcessResult result = iodbg({"reboot", "--yes"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "Reset  requested\n");
    EXPECT_EQ(result.err, "iodbg: resetting the board\n");
    EXPECT_EQ(requests(), Lines{"CPLD write reg 5 (reset) = 0x0000"});
    EXPECT_EQ(devices().resets, 1u);
    EXPECT_EQ(jsonAt(json({"reboot", "--yes"}), ""), "{\"reset\":true,\"failures\":[]}");
}

TEST_F(RebootCommandTest, ResetsWhenTheQuestionIsConfirmed) {
    uint32_t resets = 0;
    for (const char *answer : {"y\n", "Y\n", "yes\n", "y"}) {
        const ProcessResult result = iodbg({"reboot"}, answer);
        EXPECT_EQ(result.exitCode, 0) << answer;
        EXPECT_EQ(result.out, "Reset  requested\n");
        EXPECT_EQ(result.err, "Reset the board now? [y/N] \niodbg: resetting the board\n");
        EXPECT_EQ(devices().resets, ++resets);
    }
}

TEST_F(RebootCommandTest, EveryOtherAnswerRefuses) {
    trace();
    for (const char *answer : {"n\n", "\n", "no\n", "yep\n", "ye", " y\n", "reset it, yes\ny\n",
                               "yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy\n"}) {
        const ProcessResult result = iodbg({"reboot"}, answer);
        EXPECT_EQ(result.exitCode, 2) << answer;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err,
                  "Reset the board now? [y/N] \niodbg: not confirmed, nothing was done\n");
    }
    EXPECT_EQ(devices().resets, 0u);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(RebootCommandTest, NobodyToAnswerRefuses) {
    expectFailure({"reboot"}, 2, {"nobody answered, nothing was done; say --yes where nobody can"});
    EXPECT_EQ(jsonAt(json({"reboot"}, 2), "/error/exit_code"), "2");
    EXPECT_EQ(devices().resets, 0u);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(RebootCommandTest, ReportsFailures) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, -EIO));
    expectFailure({"reboot", "--yes"}, 1, {"cannot reset the board: status -5"});
    EXPECT_EQ(devices().resets, 0u);
    clearFaults();
    expectUntouched({"reboot", "now"}, "not expected");
}

TEST_F(PtpCommandsTest, GivesAPulse) {
    reg(6) = 0x8600;
    trace();
    EXPECT_EQ(iodbg({"ptp", "pulse"}).out, "PTP trigger line  was low for a pulse, is high\n");
    EXPECT_EQ(
        trace(),
        (Lines{"CPLD read  reg 6 (control) = 0x8600", "CPLD write reg 6 (control) = 0x0600",
               "sleep 100 us", "CPLD read  reg 6 (control) = 0x0600",
               "CPLD write reg 6 (control) = 0x8600", "CPLD read  reg 6 (control) = 0x8600"}));
    EXPECT_EQ(devices().ptpPulses, 1u);
    EXPECT_EQ(jsonAt(json({"ptp", "pulse"}), ""), "{\"level\":1,\"failures\":[]}");
}

TEST_F(PtpCommandsTest, DetectsALineThatStaysLow) {
    addFault(silence(FaultDevice::Cpld, FaultOp::Write));
    expectFailure({"ptp", "pulse"}, 3, {"bit 15 of CPLD register 6, stayed low after the pulse"});
}

TEST_F(PtpCommandsTest, ReportsFailures) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, -EIO));
    expectFailure({"ptp", "pulse"}, 1, {"cannot give a pulse on the PTP trigger line: status -5"});
    clearFaults();
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, 3));
    expectFailure({"ptp", "pulse"}, 1, {"cannot read the PTP trigger line"});
}

TEST_F(PtpCommandsTest, RefusesWrongWords) {
    expectUntouched({"ptp"}, "see 'iodbg ptp --help'");
    expectUntouched({"ptp", "pulse", "1"}, "not expected");
}

} // namespace
