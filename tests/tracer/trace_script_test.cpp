// `iodbg trace` of scripts, whose shell and tools are the host's.

#include "tests/tracer/trace_command_test.h"

#include <csignal>
#include <memory>
#include <sys/wait.h>

namespace {

using nlohmann::json;

class TraceScriptTest : public TraceCommandTest {
  protected:
    static std::set<int> processesIn(const std::string &trace) {
        std::set<int> processes;
        for (const std::string &line : linesOf(trace))
            processes.insert(parsedJson(line)["pid"].get<int>());
        return processes;
    }

    /** Lines of some processes, or of all, without what tells one run from another. */
    static Lines steady(const std::string &text, const std::set<int> &processes = {}) {
        Lines lines;
        for (const std::string &line : linesOf(text)) {
            json object = parsedJson(line);
            if (!processes.empty() && processes.count(object["pid"].get<int>()) == 0)
                continue;
            object.erase("time_ns");
            object.erase("pid");
            lines.push_back(object.dump());
        }
        return lines;
    }
};

constexpr char kManyRequests[] =
    "\"$0\" init; \"$0\" show; \"$0\" check; \"$0\" cpld set 7 1; \"$0\" cpld get 64;"
    " \"$0\" i2c read 99 0 0 0 1; \"$0\" gpio set 19 1; \"$0\" gpio get 9999; \"$0\" gpio get 0;"
    " \"$0\" poe set priority 3 high; head -c 70000 /dev/zero > \"$1\"; \"$0\" mtd write mtd4 "
    "\"$1\" --yes; \"$0\" boot set mode 1;"
    " echo logic > \"$1\"; \"$0\" upgrade cpld \"$1\" --yes; cat /proc/mtd; exit 7";

TEST_F(TraceScriptTest, TellsWhatTheBoardTells) {
    const std::string copy = path("copy");
    vboard({"copy", board(), copy});
    const std::string file = path("trace.json");
    const ProcessResult result = trace({"--json", "--output", file, "--", "sh", "-c", kManyRequests,
                                        builtProgram("iodbg"), path("logic")});
    EXPECT_EQ(result.exitCode, 7) << result.err;
    const std::string told = bytesOutsideHoles(file);
    // A tool that stands in for the system's has the board within itself, and is not seen.
    EXPECT_EQ(steady(told), steady(vboard({"trace", board(), "--json"}), processesIn(told)));
    EXPECT_GT(linesOf(told).size(), 400u);
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    // And the same is answered once more, by a board as it was before.
    const ProcessResult replay = answer({"replay", copy, file, "--strict", "--json"});
    EXPECT_GT(linesOf(replay.out).size(), 0u) << replay.err;
    for (const std::string &line : linesOf(replay.out)) {
        const nlohmann::json event = parsedJson(line);
        if (event["event"] == "difference") {
            EXPECT_EQ(event["variation"], "time") << line << ": a second of the calendar at most";
        }
    }
}

TEST_F(TraceScriptTest, TheEndOfAProgramThatIsKilledIsToldAsShellsTellIt) {
    const ProcessResult result = trace({"--output", "-", "--", "sh", "-c", "kill -TERM $$"});
    EXPECT_EQ(result.exitCode, 128 + SIGTERM);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(vboard({"trace", board()}), "") << "it sends nothing itself";
}

TEST_F(TraceScriptTest, WhatGoesOnBehindTheProgramIsWaitedFor) {
    const std::string file = path("trace.json");
    const ProcessResult result =
        trace({"--json", "--output", file, "--", "sh", "-c",
               "(while [ -d /proc/$$ ]; do sleep 0.01; done; \"$0\" cpld get 9) & exit 4",
               builtProgram("iodbg")});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(readsIn(bytesOutsideHoles(file))[9].count, 1);
}

TEST_F(TraceScriptTest, SignalsAreForTheProgramAsLongAsItIsThere) {
    const Environment environment = boardEnvironment(board());
    const auto started = [&](const std::string &script) {
        return std::make_unique<Process>(
            Words{builtProgram("iodbg"), "trace", "--", "sh", "-c", script}, environment);
    };
    const std::unique_ptr<Process> told =
        started("trap 'exit 9' TERM; echo ready; while :; do sleep 1; done");
    ASSERT_TRUE(comesTrue([&] { return told->output() == "ready\n"; }));
    told->signal(SIGINT); // which a terminal sends to both
    told->signal(SIGTERM);
    EXPECT_EQ(told->wait().exitCode, 9);

    const std::unique_ptr<Process> left =
        started("(sleep 1; exec tail -f /dev/null) & echo $!; exit 4");
    ASSERT_TRUE(comesTrue([&] { return left->output().ends_with("\n"); }));
    const pid_t behind = std::stoi(left->output());
    siginfo_t end = {};
    while (end.si_pid == 0) { // one that comes before the program's end is seen is for that
        left->signal(SIGINT);
        waitid(P_PID, static_cast<id_t>(left->pid()), &end, WEXITED | WNOHANG | WNOWAIT);
    }
    kill(behind, SIGKILL);
    EXPECT_EQ(left->wait().exitCode, 4);
}

TEST_F(TraceScriptTest, AProgramGoesOnWhenItsTraceCannotBeWritten) {
    const ProcessResult result = runOnBoard(
        board(), {"sh", "-c",
                  "\"$0\" trace -- sh -c '\"$0\" cpld get 2 && sleep 0.2 && \"$0\" cpld get 3 && "
                  "touch \"$1\"' \"$0\" \"$1\" 2> /dev/full",
                  builtProgram("iodbg"), path("done")});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(std::filesystem::exists(path("done")));
}

TEST_F(TraceScriptTest, WhatIsLostIsSaid) {
    const std::string file = path("trace.json");
    Process process({builtProgram("iodbg"), "trace", "--json", "--output", file, "--", "sh", "-c",
                     "kill -STOP $PPID; exec \"$0\" 2000", builtProgram("ask_board")},
                    boardEnvironment(board()));
    ASSERT_TRUE(comesTrue([&] { return process.output() == "asked\n"; }));
    process.signal(SIGCONT);
    const ProcessResult result = process.wait();
    EXPECT_EQ(result.exitCode, 3);
    int told = 0;
    for (const auto &[reg, reads] : readsIn(bytesOutsideHoles(file)))
        told += reads.count;
    EXPECT_LT(told, 12000);
    EXPECT_EQ(result.err, "iodbg: " + std::to_string(12000 - told) +
                              " requests came faster than they could be told, and are missing\n");
}

} // namespace
