// The completion of iodbg and vboard, in a bash that calls it as it does when somebody presses Tab.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

class CompletionTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        ASSERT_EQ(run({builtProgram("vboard"), "create", "--model", "0x0709", board()}).exitCode,
                  0);
        std::ofstream(folder_->path() + "/image one.bin");
        std::ofstream(folder_->path() + "/record");
    }
    static void TearDownTestSuite() { folder_.reset(); }
    static std::string board() { return folder_->path() + "/board"; }

    /** What bash offers for the last word of a line, in any order. */
    static Words completed(const Words &line) {
        Words argv = {"bash",
                      "-c",
                      "cd \"$1\" && PATH=$2:$PATH && . \"$3\" && shift 3 && "
                      "COMP_WORDS=(\"$@\") && COMP_CWORD=$(($# - 1)) && "
                      "read -r _ _ function _ <<<\"$(complete -p \"${1##*/}\")\" && "
                      "$function && printf '%s\\n' \"${COMPREPLY[@]}\"",
                      "bash",
                      folder_->path(),
                      builtProgram(""),
                      BSP_TEST_COMPLETION};
        argv.insert(argv.end(), line.begin(), line.end());
        const ProcessResult result = run(argv);
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(line);
        EXPECT_EQ(result.err, "") << ::testing::PrintToString(line);
        Words offered = linesOf(result.out);
        std::erase(offered, "");
        std::sort(offered.begin(), offered.end());
        return offered;
    }

    static inline std::unique_ptr<TemporaryFolder> folder_;
};

TEST_F(CompletionTest, OffersWhatTheProgramsTakeThere) {
    const struct {
        Words line;
        Words offered;
    } rows[] = {
        // commands
        {{"iodbg", "wat"}, {"watch", "watchdog"}},
        {{"iodbg", "mtd", ""}, {"erase", "info", "list", "read", "write"}},
        {{"iodbg", "led", "set", ""}, {"indexed", "lamp4", "lamp5", "poe", "system"}},
        {{"iodbg", "poe", "set", "l"}, {"legacy", "limit", "limit-type"}},
        {{"iodbg", "show", ""}, {}},
        {{builtProgram("iodbg"), "temp"}, {"temperature"}},
        {{"vboard", "c"}, {"capture", "console", "copy", "create"}},
        {{"vboard", "fault", board(), ""}, {"add", "clear", "list"}},
        {{"vboard", "flash", board(), ""}, {"mark-bad"}},
        // options
        {{"iodbg", "watch", "--"},
         {"--changes", "--count", "--help", "--interval", "--json", "--only", "--version"}},
        {{"iodbg", "--"}, {"--help", "--json", "--version"}},
        {{"vboard", "--"}, {"--help", "--version"}},
        {{"iodbg", "--json", "wat"}, {"watch", "watchdog"}},
        {{"iodbg", "watchdog", "feed", "--every", "2", "--c"}, {"--count"}},
        {{"iodbg", "eeprom", "dump", "--offset", "0", "--l"}, {"--length"}},
        {{"vboard", "trace", board(), "--"},
         {"--clear", "--follow", "--help", "--json", "--last", "--number-processes"}},
        {{"vboard", "fault", board(), "add", "--nth", "2", "--e"}, {"--effect"}},
        // words that help shows
        {{"iodbg", "identity", "get", ""}, {"mac", "record", "serial"}},
        {{"iodbg", "identity", "get", "--index", "s"}, {"supply1", "supply2"}},
        {{"iodbg", "identity", "get", "--index", "=", "b"}, {"board"}},
        {{"iodbg", "identity", "get", "--index", "="}, {"board", "supply1", "supply2"}},
        {{"iodbg", "poe", "set", "mode", "3", ""}, {"auto", "disabled", "manual", "semi"}},
        {{"iodbg", "led", "set", "7", "3", "o"}, {"off", "on"}},
        {{"iodbg", "sfp", "tx", "--", "49", ""}, {"off", "on"}},
        {{"iodbg", "mtd", "read", "mtd1"}, {"mtd12", "mtd14"}},
        {{"iodbg", "upgrade", "os", "x", "--bank", ""}, {"0", "1"}},
        {{"iodbg", "boot", "get", "b"}, {"baudrate"}},
        {{"iodbg", "boot", "set", "baudrate", "1"}, {"115200", "19200"}},
        {{"iodbg", "boot", "set", "speed", ""}, {}},
        {{"vboard", "create", "--time", ""}, {"real", "stepped", "virtual"}},
        {{"vboard", "fault", board(), "add", "--device", "mtd"},
         {"mtd0", "mtd12", "mtd14", "mtd4"}},
        {{"vboard", "fault", board(), "add", "--effect", "re"}, {"refuse="}},
        {{"vboard", "fault", board(), "add", "--when", ""}, {"every", "from", "once"}},
        {{"vboard", "flash", board(), "mark-bad", "1"}, {"12", "14"}},
        // what has no words to offer
        {{"iodbg", "cpld", "get", "1", ""}, {}},
        {{"iodbg", "clock", "set", "2026-11-21T12", ":", "3"}, {}},
        // what the virtual board tells
        {{"vboard", "create", "--model", "0x07"}, {"0x0709"}},
        {{"vboard", "get", board(), "fan.1."}, {"fan.1.present", "fan.1.speed", "fan.1.state"}},
        {{"vboard", "set", board(), "fan.1."},
         {"fan.1.present=no", "fan.1.present=yes", "fan.1.state=failing", "fan.1.state=good",
          "fan.1.state=held", "fan.1.state=stuck"}},
        {{"vboard", "set", board(), "cpld.1=1", "temperature.am"}, {"temperature.ambient="}},
        {{"vboard", "set", board(), "cpld.1=1", "temperature.s"},
         {"temperature.state=good", "temperature.state=missing", "temperature.state=stuck"}},
        {{"vboard", "set", board(), "fan.1.state", "=", "s"}, {"stuck"}},
        {{"vboard", "set", board(), "poe.controller", ""}, {"missing", "present"}},
        {{"vboard", "properties", "rtc"}, {"rtc.battery", "rtc.bus", "rtc.time"}},
        {{"vboard", "get", board(), "rtc.time", "supply.2.line.p"}, {"supply.2.line.presence"}},
        {{"vboard", "get", board(), "sfp.54.m"}, {"sfp.54.module"}}, // of an empty cage as well
        // files
        {{"iodbg", "upgrade", "cpld", "im"}, {"image one.bin"}},
        {{"iodbg", "mtd", "write", "mtd4", "r"}, {"record"}},
        {{"iodbg", "eeprom", "dump", "--output", "re"}, {"record"}},
        {{"iodbg", "image", "pack-boot", "record", "im"}, {"image one.bin"}},
        {{"iodbg", "mtd", "erase", folder_->path() + "/re"}, {folder_->path() + "/record"}},
        {{"vboard", "get", ""}, {"board"}},
        {{"vboard", "fault", "b"}, {"board"}},
        // behind vboard run
        {{"vboard", "run", "b"}, {"board"}},
        {{"vboard", "run", board(), "--", "iodbg", "wat"}, {"watch", "watchdog"}},
        {{"vboard", "run", board(), "--", builtProgram("iodbg"), "fan", ""}, {"get", "set"}},
        {{"vboard", "run", board(), "--", "iodbg", "sfp", "tx", "49", "--"},
         {"--help", "--json", "--version"}},
        {{"vboard", "run", board(), "--", "vboard", "flash", board(), "m"}, {"mark-bad"}},
        {{"vboard", "run", board(), "--", "cat", "rec"}, {"record"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(completed(row.line), row.offered) << ::testing::PrintToString(row.line);
}

TEST_F(CompletionTest, RulesAreOfferedByTheirNumbers) {
    const Words add = {builtProgram("vboard"),
                       "fault",
                       board(),
                       "add",
                       "--device",
                       "cpld",
                       "--effect",
                       "no-answer"};
    ASSERT_EQ(run(add).exitCode, 0);
    ASSERT_EQ(run(add).exitCode, 0);
    EXPECT_EQ(completed({"vboard", "fault", board(), "clear", "1", ""}), (Words{"1", "2"}));
}

TEST_F(CompletionTest, ACommandIsOfferedBehindVboardRun) {
    const Words offered = completed({"vboard", "run", board(), "--", "vboar"});
    EXPECT_TRUE(std::count(offered.begin(), offered.end(), "vboard") > 0);
}

} // namespace
