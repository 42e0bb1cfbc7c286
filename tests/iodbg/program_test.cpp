// What holds for the whole of iodbg: help, version, JSON errors, and that reading changes nothing.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"

namespace {

using ProgramTest = IodbgTest;

TEST_F(ProgramTest, HelpNamesCommandsAndExitCodes) {
    const ProcessResult result = iodbg({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    for (const char *text :
         {"show", "check",       "watch",   "init",   "identity", "eeprom",  "power",
          "fan",  "temperature", "clock",   "led",    "watchdog", "ptp",     "reboot",
          "cpld", "i2c",         "gpio",    "poe",    "sfp",      "mdio",    "image",
          "boot", "mtd",         "upgrade", "status", "trace",    "capture", "diff"})
        EXPECT_NE(result.out.find("\n  " + std::string(text) + " "), std::string::npos) << text;
    for (const char *text : {"fans", "temperature", "clock", "SFP modules", "MDIO", "--json",
                             "  3  written, but what reads back differs; also a PoE port that was "
                             "switched on\n     and stays off\n",
                             "  5  'check' found a fault of the unit\n"})
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
    EXPECT_NE(iodbg({"cpld", "set", "--help"}).out.find("VALUE"), std::string::npos);
}

TEST_F(ProgramTest, PrintsItsVersion) {
    const ProcessResult result = iodbg({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "iodbg " BSP_TEST_VERSION "\n");
}

TEST_F(ProgramTest, RefusesWrongCommands) {
    expectRefusal({}, 2, "a command is missing: give one of show|check|");
    expectRefusal({"sow"}, 2, "'sow' is none of show|check|");
    expectRefusal({"cpld", "sow"}, 2, "'sow' is none of get|set; see 'iodbg cpld --help'");
    expectRefusal({"show", "--colour"}, 2, "--colour; see 'iodbg show --help'");
    expectRefusal({"gpio", "get", "1", "show"}, 2, "show");
}

TEST_F(ProgramTest, ProgramsGetErrorsAsJson) {
    for (const Words &command :
         {Words{"cpld", "set", "1", "zz"}, Words{"sow"}, Words{"eeprom", "write", "0"}}) {
        const std::string answer = json(command, 2);
        EXPECT_EQ(jsonAt(answer, "/error/exit_code"), "2");
        EXPECT_FALSE(jsonAt(answer, "/error/message").empty());
    }
    const std::string answer = json({"gpio", "get", "32"}, 2);
    EXPECT_EQ(jsonKeys(answer, "/error"),
              (Words{"exit_code", "message", "status", "status_name", "meaning", "next"}));
}

TEST_F(ProgramTest, JsonMayStandBeforeTheCommand) {
    EXPECT_EQ(jsonAt(iodbg({"--json", "gpio", "get", "0"}).out, "/line"), "0");
}

TEST_F(ProgramTest, ANumberThatTheBoardDoesNotHaveIsWrongUsageWhoeverJudgesIt) {
    useModel(0x0809); // 24 PoE ports, cages 25-30, two supplies
    iodbg({"show"});
    const std::pair<Words, const char *> rows[] = {
        {{"fan", "set", "11"}, "LEVEL: '11' is not a number from 1 to 10"},
        {{"power", "3"}, "BSP_E_INVALID (1002)"},
        {{"power", "7"}, "N: '7' is not a number from 1 to 6"},
        {{"sfp", "show", "31"}, "the SFP cages of this board are 25-30"},
        {{"sfp", "dump", "24"}, "the SFP cages of this board are 25-30"},
        {{"sfp", "phy", "999"}, "the SFP cages of this board are 25-30"},
        {{"sfp", "tx", "999", "on"}, "the SFP cages of this board are 25-30"},
        {{"led", "set", "poe", "25", "on"}, "cannot set LED poe 25: BSP_E_INVALID (1002)"},
        {{"poe", "port", "25"}, "there is no PoE port 25; this board has ports 1 to 24"},
        {{"poe", "status", "20-25"}, "there is no PoE port 25; this board has ports 1 to 24"},
        {{"cpld", "get", "1", "64"}, "cannot read CPLD register 64: status -22"},
        {{"cpld", "set", "64", "0"}, "cannot read CPLD register 64: status -22"},
        {{"gpio", "get", "9999"}, "cannot read GPIO line 9999: status -22"},
        {{"gpio", "set", "9999", "1"}, "cannot drive GPIO line 9999: status -22"},
        {{"mdio", "read", "32", "0"}, "A: '32' is not a number from 0 to 31"},
        {{"eeprom", "dump", "--offset", "5000"}, "which has 1024 bytes"},
    };
    for (const auto &[words, text] : rows)
        expectRefusal(words, 2, text);
}

TEST_F(ProgramTest, AFullStandardOutputIsReported) {
    const FileSizeLimit limit = limitFiles(512);
    const ProcessResult result = iodbg({"eeprom", "dump"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.err.substr(0, 57),
              "iodbg: cannot write to standard output: File too large; l");
}

TEST_F(ProgramTest, EveryStatusOfTheHeaderIsExplained) {
    const std::string header = readFile(BSP_TEST_HEADER);
    const size_t start = header.find("enum BspStatus {");
    ASSERT_NE(start, std::string::npos);
    const std::string body = header.substr(start, header.find("};", start) - start);

    const std::string answer = json({"status"});
    size_t count = 0;
    for (const Words &match : matchesIn(body, R"((BSP_[A-Z_]+)\s*=\s*(-?\d+))")) {
        const std::string row = "/statuses/" + std::to_string(count);
        EXPECT_EQ(jsonAt(answer, row + "/status_name"), "\"" + match[1] + "\"");
        EXPECT_EQ(jsonAt(answer, row + "/status"), match[2]);
        EXPECT_GT(jsonAt(answer, row + "/meaning").size(), 2u);
        EXPECT_GT(jsonAt(answer, row + "/next").size(), 2u);
        ++count;
    }
    EXPECT_GT(count, 20u);
    EXPECT_EQ(jsonKeys(answer, "/statuses").size(), count);
}

TEST_F(ProgramTest, ExplainsSingleStatuses) {
    const std::string named = json({"status", "-1105"});
    EXPECT_EQ(jsonAt(named, "/status_name"), "\"BSP_E_POE_FRAME\"");
    EXPECT_EQ(jsonAt(named, "/status"), "-1105");
    EXPECT_EQ(jsonAt(json({"status", "0x3EA"}), "/status_name"), "\"BSP_E_INVALID\"");
    const std::string foreign = json({"status", "-5"});
    EXPECT_EQ(jsonAt(foreign, "/status_name"), "null");
    EXPECT_NE(jsonAt(foreign, "/meaning").find("Input/output error"), std::string::npos);
    expectRefusal({"status", "BSP_OK"}, 2, "CODE: ");
    expectRefusal({"status", "2147483648"}, 2, "CODE: ");
    EXPECT_EQ(jsonAt(json({"status", "-2147483648"}), "/status"), "-2147483648");
}

TEST_F(ProgramTest, ReadingChangesNothing) {
    devices().gpio.external[3] = 1;
    world::set("sfp.49.module", "copper-mode4");
    world::set("sfp.50.module", "sr");
    world::set("rtc.time", "2051-02-28 12:34:56");
    const BoardContent before = content();
    for (const Words &command :
         {Words{"show"},
          Words{"identity", "get"},
          Words{"identity", "get", "serial"},
          Words{"identity", "get", "mac"},
          Words{"identity", "get", "record"},
          Words{"identity", "get", "record", "--output", hostFile("board")},
          Words{"identity", "get", "--index", "supply1"},
          Words{"identity", "get", "record", "--index", "supply2", "--output", hostFile("2")},
          Words{"identity", "set", "serial", "X", "--dry-run"},
          Words{"identity", "set", "mac", "00:11:22:33:44:55", "--dry-run"},
          Words{"eeprom", "dump"},
          Words{"eeprom", "dump", "--device", "supply1"},
          Words{"eeprom", "dump", "--device", "supply2", "--output", hostFile("dump")},
          Words{"eeprom", "write", "0", "00", "--dry-run"},
          Words{"cpld", "get"},
          Words{"cpld", "get", "1", "2"},
          Words{"i2c", "read", "0", "0", "0x50", "0", "16"},
          Words{"gpio", "get", "0"},
          Words{"gpio", "get", "3"},
          Words{"power"},
          Words{"power", "2"},
          Words{"led"},
          Words{"led", "get"},
          Words{"watchdog", "get"},
          Words{"check"},
          Words{"watch", "--count", "1"},
          Words{"fan", "get"},
          Words{"temperature"},
          Words{"clock", "get"},
          Words{"sfp", "list"},
          Words{"sfp", "show", "50"},
          Words{"sfp", "dump", "50"},
          Words{"sfp", "phy", "49"},
          Words{"mdio", "read", "3", "5"},
          Words{"poe", "info"},
          Words{"poe", "status", "3-4"},
          Words{"poe", "port", "3"},
          Words{"image", "info"},
          Words{"boot", "get"},
          Words{"mtd", "read", "mtd4", hostFile("settings")},
          Words{"status"},
          Words{"status", "1002"},
          Words{"--version"},
          Words{"--help"}}) {
        const ProcessResult result = iodbg(command);
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(command) << result.err;
        EXPECT_TRUE(content() == before) << ::testing::PrintToString(command);
    }
}

} // namespace
