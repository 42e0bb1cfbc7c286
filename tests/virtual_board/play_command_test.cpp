// `vboard play` as its users run it, with programs on the board: natively, since emulated programs
// cannot execute each other.

#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"
#include "virtual_board/command/player.h"
#include "virtual_board/command/scenario_file.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace {

using vboard::Board;
using vboard::NotAsExpected;
using vboard::parseScenario;
using vboard::Player;
using vboard::Scenario;

/** Whether a process is there, and not only its end, which somebody has still to look at. */
bool isRunning(int id) {
    std::ifstream stat("/proc/" + std::to_string(id) + "/stat");
    std::string text;
    return std::getline(stat, text) && text.find(") Z ") == std::string::npos;
}

class PlayCommandTest : public CommandTest {
  protected:
    /** Plays a file with this content, from the folder that it is in. */
    ProcessResult play(const std::string &content, const Words &options = {}) const {
        write(content);
        Words words = {
            "sh",    "-c",    "cd \"$0\" && exec \"$@\"", path(""), builtProgram("vboard"), "play",
            board(), "x.toml"};
        words.insert(words.end(), options.begin(), options.end());
        return run(words, environment());
    }

    void write(const std::string &content) const { std::ofstream(path("x.toml")) << content; }

    static Environment environment() {
        const std::string programs =
            std::filesystem::path(builtProgram("vboard")).parent_path().string();
        return {"PATH=" + programs + ":" + std::getenv("PATH")};
    }

    /** Expects a step to fail that runs a program, with this reason. */
    void expectReason(const std::string &step, const std::string &reason) const {
        const ProcessResult result = play("[[step]]\n" + step);
        EXPECT_EQ(result.exitCode, 5) << step << result.err;
        EXPECT_TRUE(result.err.ends_with(": " + reason + "\n")) << result.err;
    }
};

TEST_F(PlayCommandTest, EachStepIsToldAndThenTheVerdict) {
    const std::string file = "title = \"heat\"\n"
                             "[[step]]\nset.temperature.ambient = 40\n"
                             "[[step]]\nafter = 2\nrun = \"echo '{\\\"a\\\": 1}'; sleep 3\"\n"
                             "expect = \"a == 1\"\n"
                             "[[step]]\ntitle = \"the fan\"\nexpect = \"fan.1.speed == 2400\"\n";
    ProcessResult result = play(file);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "      0.000  passed  line 3    set temperature.ambient = 40\n"
              "      5.000  passed  line 6    run echo '{\"a\": 1}'; sleep 3, expect a == 1\n"
              "      5.000  passed  line 10   the fan\n"
              "passed: 3 steps, 5.000 s on the board's clock\n");
    result = play(file + "within = 2\n[[step]]\nexpect = \"fan.1.speed == 0\"\nwithin = 1.5\n"
                         "[[step]]\nset.fan.1.state = \"stuck\"\n",
                  {"--json"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.err,
              "vboard: x.toml:13: expect fan.1.speed == 0, within 1.5 s: fan.1.speed == "
              "0 did not come true within 1.5 s: fan.1.speed is 2400\n");
    const Words lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 5u) << result.out;
    EXPECT_EQ(lines[3],
              R"({"event":"step","step":4,"line":13,"title":null,"does":"expect",)"
              R"("text":"expect fan.1.speed == 0, within 1.5 s","moment":null,)"
              R"("time_ns":6500000000,"passed":false,"reason":"fan.1.speed == 0 did not come true )"
              R"(within 1.5 s: fan.1.speed is 2400"})");
    EXPECT_EQ(lines[4],
              R"({"event":"verdict","file":"x.toml","title":"heat","steps":5,"steps_passed":3,)"
              R"("time_ns":6500000000,"passed":false,"line":13,"reason":"fan.1.speed == 0 did not )"
              R"(come true within 1.5 s: fan.1.speed is 2400"})");
    EXPECT_EQ(vboard({"get", board(), "fan.1.state"}), "good\n"); // what is behind was not done
}

TEST_F(PlayCommandTest, AFileThatIsRefusedDoesNothing) {
    const auto before = contentOf(board());
    const ProcessResult result = play("[[step]]\nset.fan.1.state = \"stuck\"\n"
                                      "[[step]]\nset.fan.9.state = \"stuck\"\n"
                                      "[[step]]\nrun = [\"no-such-program\"]\n");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "vboard: x.toml:4:11: there is no fan.9.state; the numbers are 1 to 2\n"
              "x.toml:6:1: there is no program 'no-such-program' in the folders of PATH\n");
    EXPECT_EQ(play("[[step]]\nset.fan.1.state = \"stuck\"\n", {"--check"}).exitCode, 0);
    EXPECT_TRUE(contentOf(board()) == before);
    expectFailure(2, "FILE is required", {"play", board()});
    const ProcessResult told =
        play("[[step]]\nset.fan.1.state = \"stuck\"\n", {"--check", "--json"});
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_EQ(linesOf(told.out).size(), 2U) << told.out; // the scenario, and its step
    const ProcessResult refused = play("[[step]]\nrun = \"true\"\n", {"--no-run"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "vboard: x.toml:2: run true: programs are not run with --no-run\n");
    write("[[step]]\nadvance = 1\n");
    expectFailure(1, "none: No such file or directory", {"play", path("none"), path("x.toml")});
}

TEST_F(PlayCommandTest, AStepThatCannotBeDoneIsNoFailedExpectation) {
    const ProcessResult result = play("[[step]]\nadvance = 1\n[[step]]\nrun = [\"/no/program\"]\n");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "vboard: x.toml:4: run /no/program: cannot start /no/program: No such "
                          "file or directory\n");
    EXPECT_NE(result.out.find("FAILED  line 4"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("FAILED: x.toml:4, 1 of 2 steps passed"), std::string::npos);
}

TEST_F(PlayCommandTest, AProgramIsJudgedByItsEndAndItsOutput) {
    EXPECT_EQ(
        play("[[step]]\nrun = \"exit 3\"\nexit = 3\n"
             "[[step]]\nrun = \"kill -9 $$\"\nexit = 137\n"
             "[[step]]\nrun = [\"cat\", \"/proc/cmdline\"]\n"
             "[[step]]\nrun = [\"cat\"]\n" // has no input
             "[[step]]\nrun = \"echo x; echo '{\\\"a\\\": 1}'; echo '{\\\"a\\\": 2}'\"\n"
             "expect = \"a == 1\"\n"
             "[[step]]\nrun = \"printf '{\\\"a\\\":\\\\n [2]\\\\n}'\"\nexpect = \"a.0 == 2\"\n")
            .err,
        "");
    expectReason("run = \"echo out; echo no > /dev/stderr; exit 4\"\n",
                 "it ended with 4, not with 0; it said 'no'");
    expectReason("run = \"echo out; exit 4\"\nexit = 5\n",
                 "it ended with 4, not with 5; it said 'out'");
    expectReason("run = \"true\"\nexit = 1\n", "it ended with 0, not with 1");
    expectReason("run = \"true\"\nexpect = \"a == 1\"\n", "it printed no JSON");
    expectReason("run = \"echo '{'\"\nexpect = \"a == 1\"\n", "it printed no JSON; it said '{'");
    expectReason("run = \"echo '{\\\"a\\\": 2}'\"\nexpect = \"a == 1\"\n",
                 "a == 1 is not so: a is 2");
    expectReason("run = \"echo '{}'\"\nexpect = \"a != 1\"\n", "a != 1 is not so: a is missing");
    expectReason("run = \"while true; do true; done\"\nlimit = 0.1\n",
                 "it still ran after 0.1 s of the host's time");
}

TEST_F(PlayCommandTest, AProgramOnSteppedTimeSeesTheSameInEveryRun) {
    const std::string file = "[[step]]\nrun = \"sleep 3\"\n"
                             "[[step]]\nrun = \"true\"\n"
                             "[[step]]\nrun = \"sleep 0.05\"\n"
                             "[[step]]\nrun = \"while sleep 1; do echo '{\\\"a\\\": 1}'; done\"\n"
                             "background = true\nas = \"p\"\n"
                             "[[step]]\nset.fan.1.state = \"stuck\"\n" // it sleeps by then
                             "[[step]]\nfrom = \"p\"\nexpect = \"a == 1\"\n";
    Words traces;
    for (const char *name : {"first", "second"}) {
        vboard({"create", "--model", "0x0709", "--time", "stepped", path(name)});
        write(file);
        const ProcessResult result =
            run({builtProgram("vboard"), "play", path(name), path("x.toml")}, environment());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(
            result.out,
            "      3.000  passed  line 2    run sleep 3\n"
            "      3.000  passed  line 4    run true\n"
            "      3.100  passed  line 6    run sleep 0.05\n"
            "      3.100  passed  line 8    run while sleep 1; do echo '{\"a\": 1}'; done, in "
            "the background\n"
            "      3.100  passed  line 12   set fan.1.state = stuck\n"
            "      4.100  passed  line 15   expect a == 1 from p\n"
            "passed: 6 steps, 4.100 s on the board's clock\n");
        traces.push_back(vboard({"trace", "--number-processes", path(name)}));
    }
    EXPECT_EQ(traces[0], traces[1]);
}

TEST_F(PlayCommandTest, AProgramOnSteppedTimeHasItsTurnBeforeTheNextStep) {
    vboard({"set", board(), "time", "stepped"});
    EXPECT_EQ(play("[[step]]\nrun = \"echo >> begun; sleep 100\"\nbackground = true\nas = \"p\"\n"
                   "[[step]]\nstop = \"p\"\n")
                  .err,
              "");
    EXPECT_EQ(std::filesystem::file_size(path("begun")), 1u);
}

TEST_F(PlayCommandTest, AProgramOnSteppedTimeThatDoesNotWait) {
    vboard({"set", board(), "time", "stepped"});
    // What is run in the foreground has its limit,
    ProcessResult result = play("[[step]]\nrun = \"while true; do true; done\"\nlimit = 0.1\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_NE(result.err.find(": it still ran after 0.1 s of the host's time: sh (process "),
              std::string::npos)
        << result.err;
    EXPECT_TRUE(result.err.ends_with(") does not wait; the clock stands until it does\n"))
        << result.err;
    // and any other keeps the clock from moving, as it does for 'vboard advance'.
    result = play("[[step]]\nrun = \"kill -STOP $$\"\nbackground = true\n"
                  "[[step]]\nadvance = 1\n",
                  {"--json"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.err.find("vboard: x.toml:5: advance 1 s: sh (process "), 0u) << result.err;
    EXPECT_TRUE(result.err.ends_with(") is stopped; the clock stands until it does\n"));
    EXPECT_NE(linesOf(result.out).back().find("\"passed\":false,\"line\":5,"), std::string::npos)
        << result.out;
    EXPECT_EQ(vboard({"get", board(), "clock"}), "0.000000000\n");
}

TEST_F(PlayCommandTest, AProgramIsRunEachSecondUntilItIsAsExpected) {
    const std::string step =
        "[[step]]\nrun = \"echo >> runs; echo {\\\\\\\"a\\\\\\\": $(wc -l < runs)}\"\n"
        "expect = \"a == 7\"\nwithin = ";
    ProcessResult result = play(step + "2.5\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_TRUE(result.err.ends_with(": a == 7 is not so: a is 4\n")) << result.err;
    EXPECT_EQ(vboard({"get", board(), "clock"}), "2.500000000\n");
    result = play(step + "60\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(vboard({"get", board(), "clock"}), "4.500000000\n");
}

TEST_F(PlayCommandTest, AProgramIsRunOnceAfterAWaitWithinATime) {
    const ProcessResult result = play("[[step]]\nwhen = \"fan.1.speed == 2400\"\nwithin = 9\n"
                                      "run = \"echo >> runs; exit 1\"\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(std::filesystem::file_size(path("runs")), 1u);
}

TEST_F(PlayCommandTest, AReaderWhoGoesEndsThePrograms) {
    vboard({"set", board(), "time", "real"});
    write("[[step]]\nbackground = true\nrun = \"sleep 1000 & echo $! > '" + path("id") +
          "'; wait\"\n[[step]]\nrun = \"until [ -s '" + path("id") +
          "' ]; do :; done\"\n[[step]]\nafter = 0.3\n[[step]]\nafter = 1000\n");
    const ProcessResult result = run({"sh", "-c", "\"$0\" play \"$1\" \"$2\" | head -n 1",
                                      builtProgram("vboard"), board(), path("x.toml")},
                                     environment());
    EXPECT_EQ(linesOf(result.out).size(), 1u);
    EXPECT_NE(result.err.find("vboard: interrupted at "), std::string::npos) << result.err;
    int number = 0;
    ASSERT_TRUE(bool(std::ifstream(path("id")) >> number));
    EXPECT_TRUE(comesTrue([number] { return !isRunning(number); }));
}

TEST_F(PlayCommandTest, WhatAProgramStartsAndLeavesEndsWithIt) {
    const std::string id = path("id");
    const ProcessResult result =
        play("[[step]]\nrun = \"cat /dev/zero > /dev/null & echo $! > '" + id + "'\"\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    int number = 0;
    std::ifstream(id) >> number;
    ASSERT_GT(number, 0);
    EXPECT_TRUE(comesTrue([number] { return !isRunning(number); }));
}

/** A program of its own that prints what it is told to, line by line, while it is on the board. */
constexpr char kMonitor[] = "run = \"while true; do cat /proc/cmdline > /dev/null; echo \\\"$(cat "
                            "/tmp/bsp/says)\\\"; done\"\nbackground = true\nas = \"monitor\"\n";

std::string says(const std::string &line) {
    return "[[step]]\nrun = \"\"\"echo '" + line +
           "' > /tmp/bsp/next && mv /tmp/bsp/next "
           "/tmp/bsp/says\"\"\"\n";
}

TEST_F(PlayCommandTest, LinesOfAProgramInTheBackgroundAreExpected) {
    const std::string begin = says(R"({"a": 1})") + "[[step]]\n" + kMonitor;
    const std::string expect = "[[step]]\nfrom = \"monitor\"\nexpect = ";
    ProcessResult result = play(begin + expect + "\"a == 1\"\n" + says(R"({"a": 2})") + expect +
                                "\"a == 2\"\n[[step]]\nstop = \"monitor\"\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    // It moves no clock, so that the host's time has to do.
    vboard({"set", board(), "time", "real"});
    result = play(begin + expect + "\"a == 3\"\nwithin = 0.2\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.err.find("vboard: x.toml:9: expect a == 3 from monitor, within 0.2 s: no line "
                              "has a == 3 within 0.2 s: "),
              0u)
        << result.err;
}

TEST_F(PlayCommandTest, AVirtualClockIsMovedByTheProgramInTheBackground) {
    const std::string begin = "[[step]]\nrun = \"while sleep 1; do echo '{\\\"a\\\": 1}'; done\"\n"
                              "background = true\nas = \"sleeper\"\n[[step]]\nfrom = \"sleeper\"\n";
    EXPECT_EQ(play(begin + "expect = \"a == 1\"\n").exitCode, 0);
    const ProcessResult result = play(begin + "expect = \"a == 2\"\nwithin = 3\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_TRUE(result.err.ends_with(": no line has a == 2 within 3 s: a is 1\n")) << result.err;
}

TEST_F(PlayCommandTest, EachLineIsLookedAtOnce) {
    const std::string begin =
        "[[step]]\nrun = \"echo '{\\\"a\\\": 1}'; echo '{\\\"a\\\": 2}'; while "
        "sleep 1; do :; done\"\nbackground = true\nas = \"p\"\n";
    const std::string expect = "[[step]]\nfrom = \"p\"\nwithin = 3\nexpect = ";
    EXPECT_EQ(play(begin + expect + "\"a == 1\"\n" + expect + "\"a == 2\"\n").exitCode, 0);
    const ProcessResult result = play(begin + expect + "\"a == 2\"\n" + expect + "\"a == 1\"\n");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_TRUE(result.err.ends_with(": no line has a == 1 within 3 s: it printed no JSON\n"))
        << result.err;
}

TEST_F(PlayCommandTest, AProgramThatKeepsSilentIsNotWaitedForForEver) {
    const Scenario scenario =
        parseScenario("x.toml", "[[step]]\nrun = [\"sh\", \"-c\", \"while :; do :; done\"]\n"
                                "background = true\nas = \"p\"\n"
                                "[[step]]\nfrom = \"p\"\nexpect = \"a == 1\"\n");
    const Board held(board());
    Player player(held, std::chrono::milliseconds(50));
    player.play(scenario.steps.at(0));
    std::string reason;
    try {
        player.play(scenario.steps.at(1));
    } catch (const NotAsExpected &difference) {
        reason = difference.what();
    }
    EXPECT_EQ(reason, "no line has a == 1, and nobody moves the board's clock: it printed no JSON");
    EXPECT_EQ(player.passedNs(), 0u); // it has not moved the clock, and nobody else does
}

TEST_F(PlayCommandTest, AProgramThatIsStoppedIsAskedFirst) {
    const std::string begin = "[[step]]\nbackground = true\nas = \"p\"\nrun = \"trap 'echo >> " +
                              path("left") +
                              "; exit 7' TERM; echo '{\\\"a\\\": 1}'; while :; do :; done\"\n"
                              "[[step]]\nfrom = \"p\"\nexpect = \"a == 1\"\n";
    // How it ends then is its own affair.
    EXPECT_EQ(play(begin + "[[step]]\nstop = \"p\"\n").err, "");
    EXPECT_EQ(std::filesystem::file_size(path("left")), 1u);
    EXPECT_EQ(play(begin).err, "");
    EXPECT_EQ(std::filesystem::file_size(path("left")), 2u);
}

TEST_F(PlayCommandTest, AProgramThatEndsByItselfHasToEndWell) {
    const std::string begin = "[[step]]\nbackground = true\nas = \"p\"\nexit = 3\nrun = \"exit ";
    const std::string wait = "[[step]]\nfrom = \"p\"\nexpect = \"a == 1\"\n";
    const ProcessResult result = play(begin + "2\"\n" + wait);
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_TRUE(result.err.ends_with(": no line has a == 1, and it has ended with 2: it printed no "
                                     "JSON\n"))
        << result.err;
    // Its end is seen when it is stopped, or when the play ends.
    const std::string id = "'" + path("id") + "'";
    const std::string pause = "[[step]]\nrun = \"until grep -q ') Z' /proc/$(cat " + id +
                              ")/stat; do :; done 2> /dev/null\"\n";
    for (const std::string &end : {std::string("[[step]]\nstop = \"p\"\n"), std::string()}) {
        for (const int code : {2, 3}) {
            const ProcessResult ended =
                play("[[step]]\nbackground = true\nas = \"p\"\nexit = 3\nrun = \"echo $$ > " + id +
                     "; exit " + std::to_string(code) + "\"\n" + pause + end);
            EXPECT_EQ(ended.exitCode, code == 3 ? 0 : 5) << ended.err;
            EXPECT_EQ(ended.err.ends_with(": it ended with 2, not with 3\n"), code == 2)
                << ended.err;
            EXPECT_EQ(ended.err.find("x.toml:" + std::to_string(end.empty() ? 5 : 9)) !=
                          std::string::npos,
                      code == 2)
                << ended.err;
        }
    }
}

TEST_F(PlayCommandTest, AnInterruptionEndsTheProgramsAndTellsThePlace) {
    vboard({"set", board(), "time", "real"});
    const std::string id = path("id");
    write("[[step]]\nbackground = true\nrun = \"sleep 1000 & echo $! > '" + id + "'; wait\"\n" +
          "[[step]]\nafter = 1000\n");
    for (const int signal : {SIGINT, SIGTERM}) {
        std::filesystem::remove(id);
        Process process({builtProgram("vboard"), "play", board(), path("x.toml")}, environment());
        int number = 0;
        ASSERT_TRUE(comesTrue([&] { return bool(std::ifstream(id) >> number); }));
        ASSERT_TRUE(comesTrue(
            [&] { return process.output().find("in the background") != std::string::npos; }));
        process.signal(signal);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 128 + signal);
        EXPECT_EQ(result.err, "vboard: interrupted at " + path("x.toml") + ":5: after 1000 s\n");
        EXPECT_TRUE(comesTrue([number] { return !isRunning(number); }));
    }
}

TEST_F(PlayCommandTest, ATerminalShowsTheStepThatIsUnderWay) {
    write("[[step]]\nadvance = 1\n");
    const std::string shown =
        runOnTerminal({builtProgram("vboard"), "play", board(), path("x.toml")}, environment());
    EXPECT_NE(shown.find("             ...     line 2    advance 1 s\r\x1b[K      1.000  passed"),
              std::string::npos)
        << shown;
}

} // namespace
