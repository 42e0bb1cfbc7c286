// `iodbg trace`: what a program sends to the board.

#include "tests/tracer/trace_command_test.h"

#include "tests/support/patterns.h"

namespace {

using nlohmann::json;

TEST_F(TraceCommandTest, TheProgramKeepsItsStreams) {
    const ProcessResult result = trace({"--", builtProgram("iodbg"), "temperature"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "Temperature  40 C\n");
    const Lines lines = linesOf(result.err);
    ASSERT_EQ(lines.size(), 1u) << result.err;
    EXPECT_TRUE(matches(lines[0], "0\\.[0-9]{9} [0-9]+ I2C read  bus 0 ch 1 dev 0x4F off 0x00 "
                                  "len 1: 28"))
        << lines[0];
    EXPECT_EQ(linesOf(vboard({"trace", board()})).size(), 1u) << "it sends nothing itself";
}

TEST_F(TraceCommandTest, ThreadsChildrenAndWhatTheyBecomeAreSeen) {
    const std::string file = path("trace.json");
    const ProcessResult result =
        trace({"--json", "--output", file, "--", builtProgram("ask_board"), "1500"});
    EXPECT_EQ(result.exitCode, 3) << result.err;
    EXPECT_EQ(result.out, "asked\n");
    EXPECT_EQ(result.err, "");
    std::map<int, Reads> reads = readsIn(bytesOutsideHoles(file));
    for (int reg = 1; reg <= 6; ++reg) {
        EXPECT_EQ(reads[reg].count, 1500) << reg;
        EXPECT_EQ(reads[reg].processes.size(), 1u);
        EXPECT_EQ(reads[reg].processes != reads[1].processes, reg == 5) << "the child's";
    }
}

TEST_F(TraceCommandTest, APageThatIsMappedIsAllThatIsSeenOfThePhys) {
    const std::string file = path("trace.json");
    const ProcessResult result =
        trace({"--output", file, "--json", "--", builtProgram("iodbg"), "mdio", "read", "1", "2"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Lines lines = linesOf(bytesOutsideHoles(file));
    ASSERT_GE(lines.size(), 2u) << result.err;
    EXPECT_EQ(parsedJson(lines[0])["path"], "/dev/mem");
    json mapping = parsedJson(lines[1]);
    mapping.erase("time_ns");
    mapping.erase("pid");
    EXPECT_EQ(mapping, parsedJson(R"({"kind": "map", "path": "/dev/mem", "offset": 452984832,
                                      "length": 4096, "errno": 0})"));
}

TEST_F(TraceCommandTest, WhatWouldNotBeSeenIsRefused) {
    const std::string program = builtProgram("static_program");
    ProcessResult result = trace({"--", program});
    EXPECT_EQ(result.exitCode, 125);
    EXPECT_EQ(result.err,
              "iodbg: " + program +
                  " is statically linked: what it sends to the board would not be seen; trace a "
                  "program that is linked dynamically, as this user\n");
    result = trace({"--", path("nothing")});
    EXPECT_EQ(result.exitCode, 125);
    EXPECT_EQ(result.err, "iodbg: cannot start " + path("nothing") +
                              ": No such file or directory; give a program that can be started\n");
    std::ofstream(path("there")) << "mine";
    result = trace({"--output", path("there"), "--", "true"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(bytesOutsideHoles(path("there")), "mine");
    for (const Words &words : {Words{}, Words{"--"}, Words{"true"}}) {
        result = trace(words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(linesOf(result.err).size(), 1u);
    }
}

} // namespace
