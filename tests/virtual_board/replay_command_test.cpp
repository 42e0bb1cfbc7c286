// `vboard replay`: a trace that is sent to a board once more.

#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"
#include "virtual_board/command/replay.h"

namespace {

using language::NotSent;
using language::TraceKind;
using language::TraceRecord;
using language::Variation;
using vboard::ReplayCount;
using vboard::ReplayTimes;

TraceRecord record(uint64_t timeNs, int32_t pid, uint64_t sleepNs = 0) {
    TraceRecord made = {};
    made.timeNs = timeNs;
    made.pid = pid;
    made.kind = sleepNs > 0 ? TraceKind::Sleep : TraceKind::CpldRead;
    made.sleepNs = sleepNs;
    return made;
}

TEST(ReplayTimes, CountFromTheFirstRequest) {
    ReplayTimes times(1000);
    EXPECT_EQ(times.dueAt(record(70, 1)), 1000u);
    EXPECT_EQ(times.dueAt(record(75, 2)), 1005u);
    EXPECT_EQ(times.dueAt(record(60, 1)), 1005u) << "in their order, also when a clock was set";
    EXPECT_EQ(times.dueAt(record(80, 1)), 1010u);
}

TEST(ReplayTimes, NoneIsSentWhileItsProcessSleeps) {
    ReplayTimes times(0);
    EXPECT_EQ(times.dueAt(record(0, 1, 50)), 0u);
    EXPECT_EQ(times.dueAt(record(2, 2)), 2u);
    EXPECT_EQ(times.dueAt(record(3, 1)), 50u);
    EXPECT_EQ(times.dueAt(record(4, 1, 20)), 50u);
    EXPECT_EQ(times.dueAt(record(5, 1)), 70u);
    EXPECT_EQ(times.dueAt(record(80, 1, UINT64_MAX)), 80u);
    EXPECT_GT(times.dueAt(record(81, 1)), 80u);
}

TEST(ReplayCount, IsToldInWordsAndAsJson) {
    ReplayCount count;
    count.same = 7;
    EXPECT_EQ(vboard::replayText(count), "Answers: 7 the same, 0 different\n");
    EXPECT_TRUE(count.isPassed(true));
    count.varying[Variation::Measured] = 2;
    count.varying[Variation::Time] = 1;
    count.notSent[NotSent::Waits] = 3;
    EXPECT_TRUE(count.isPassed(false));
    EXPECT_FALSE(count.isPassed(true));
    EXPECT_EQ(vboard::replayText(count), "Answers: 7 the same, 0 different\n"
                                         "1 differs in what varies with time\n"
                                         "2 differ in what is measured\n"
                                         "3 not sent: sleeps and steps of the clock\n");
    count.different = 1;
    EXPECT_FALSE(count.isPassed(false));
    EXPECT_EQ(vboard::replayJson(count, false).dump(),
              R"({"event":"verdict","same":7,"different":1,)"
              R"("varying":{"time":1,"measured":2,"unknown":0},)"
              R"("not_sent":{"waits":3,"files":0,"content":0,"rights":0,"mappings":0,)"
              R"("damaged":0},"passed":false})");
}

class ReplayCommandTest : public CommandTest {
  protected:
    std::string write(const std::string &text) const {
        std::ofstream(path("trace")) << text;
        return path("trace");
    }
};

constexpr char kReads[] =
    R"({"time_ns":5000000000,"pid":7,"kind":"cpld-read","register":1,"name":null,"value":1801,)"
    R"("result":0,"errno":0})"
    "\n"
    R"({"time_ns":5000000000,"pid":7,"kind":"sleep","duration_ns":2000000000})"
    "\n"
    R"({"time_ns":7000000000,"pid":7,"kind":"i2c-read","name":null,"bus":0,"channel":1,)"
    R"("device":79,"offset":0,"offset_length":0,"length":1,"data":"7f","result":0,"errno":0})"
    "\n"
    R"({"time_ns":7500000000,"pid":7,"kind":"cpld-read","register":2,"name":null,"value":0,)"
    R"("result":0,"errno":0})"
    "\n";

TEST_F(ReplayCommandTest, ShowsWhatDiffersAtItsTime) {
    const ProcessResult result = answer({"replay", board(), write(kReads)});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.err, "vboard: 1 of 3 answers differ from the recorded ones\n");
    EXPECT_EQ(result.out, "4: 7.500000000 7\n"
                          "  recorded  CPLD read  reg 2 (version) = 0x0000\n"
                          "  answered  CPLD read  reg 2 (version) = 0x1312\n"
                          "  it is 0x1312, recorded is 0x0000: bits 1 set, 4 set, 8 set, 9 set, "
                          "12 set\n"
                          "Answers: 1 the same, 1 different\n"
                          "1 differs in what is measured\n"
                          "1 not sent: sleeps and steps of the clock\n");
    EXPECT_EQ(vboard({"get", board(), "clock"}), "2.500000000\n");
}

TEST_F(ReplayCommandTest, TellsProgramsLineByLine) {
    const ProcessResult result = answer({"replay", board(), write(kReads), "--strict", "--json"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.err, "vboard: 2 of 3 answers differ from the recorded ones\n");
    const Lines lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 3u) << result.out;
    const nlohmann::json measured = parsedJson(lines[0]);
    EXPECT_EQ(measured["event"], "difference");
    EXPECT_EQ(measured["line"], 3);
    EXPECT_EQ(measured["variation"], "measured");
    EXPECT_EQ(measured["recorded"]["data"], "7f");
    EXPECT_NE(measured["answered"]["data"], "7f");
    EXPECT_EQ(measured["differs"].size(), 1u);
    EXPECT_EQ(parsedJson(lines[1])["variation"], "none");
    EXPECT_EQ(parsedJson(lines[2])["passed"], false);
}

TEST_F(ReplayCommandTest, RefusesTheWholeFileForOneLine) {
    const std::string file = write(std::string(kReads) + "{}\n");
    expectFailure(1, file + ":5: it has no \"time_ns\"", {"replay", board(), file});
    EXPECT_EQ(vboard({"trace", board()}), "") << "nothing was sent";
    expectFailure(1, "has no request in it", {"replay", board(), write("")});
    EXPECT_EQ(answer({"replay", board(), write("\n" + std::string(kReads) + "\n")}).exitCode, 5)
        << "empty lines are nothing";
    expectFailure(1, "cannot read " + path("nothing") + ": No such file or directory",
                  {"replay", board(), path("nothing")});
}

} // namespace
