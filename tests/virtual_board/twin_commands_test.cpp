// vboard create --from and vboard capture, from document to document.

#include "tests/virtual_board/command_test.h"

#include "language/captured_difference.h"
#include "language/captured_unit.h"

#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class TwinCommandsTest : public CommandTest {
  protected:
    std::string document() const { return path("unit.json"); }

    static language::CapturedUnit unitIn(const std::string &file) {
        return language::readCapture(bytesOutsideHoles(file));
    }
};

TEST_F(TwinCommandsTest, ABoardIsCapturedAndMadeAnewWithoutNoticing) {
    vboard({"set", board(), "sfp.49.module=sr", "fan.1.state=stuck", "supply.2.present=no",
            "flash.12.content@0x2700000=00112233", "flash.12.content@0x0=44"});
    vboard({"fault", board(), "add", "--device", "i2c:0.1.0x4f", "--when", "from", "--effect",
            "no-answer"});
    std::ofstream(board() + "/root/tmp/bsp/poeApp") << '\2';
    const auto before = contentOf(board());
    EXPECT_EQ(linesOf(vboard({"capture", board(), document()}))[0],
              "Saved in                    " + document());
    EXPECT_EQ(contentOf(board()), before) << "clock, trace and counts of rules as well";
    struct stat info = {};
    ASSERT_EQ(stat(document().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);
    const ProcessResult again = answer({"capture", board(), document()});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.err.find("unit.json exists; choose another name, or replace it with --force"),
              std::string::npos);
    EXPECT_NE(again.err.find("vboard: the board was not captured: "), std::string::npos);
    expectFailure(1, "cannot write /nowhere/x", {"capture", board(), "/nowhere/x"});

    const ProcessResult made =
        answer({"create", "--from", document(), "--time", "virtual", path("twin")});
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_EQ(linesOf(made.err).size(), 1U) << made.err;
    EXPECT_EQ(made.err.find("vboard: flash.12.content: it was not captured"), 0U) << made.err;
    std::ofstream(path("twin.json")) << "old";
    vboard({"capture", path("twin"), path("twin.json"), "--force"});
    const language::CapturedUnit first = unitIn(document()), second = unitIn(path("twin.json"));
    for (const auto &difference :
         language::differencesOf(first, second, language::CaptureDetail::Usual))
        ADD_FAILURE() << difference.name;
    EXPECT_EQ(first.find("image.0.header")->text()->substr(0, 8), "00112233");
    ASSERT_TRUE(first.find("temperature.sensor")->hasFailed());
    EXPECT_EQ(*second.find("poe.firmware")->number(), 2);
    EXPECT_EQ(vboard({"get", path("twin"), "sfp.49.module", "supply.2.present"}),
              vboard({"get", board(), "sfp.49.module", "supply.2.present"}));
    EXPECT_FALSE(fs::exists(document() + ".XXXXXX"));
}

TEST_F(TwinCommandsTest, SignalsEndACaptureWithoutTraces) {
    const std::string pipe = path("pipe"), temporary = path("temporary");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_directory(temporary);
    // Nobody reads what is more than the pipe has room for.
    const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GT(fcntl(reader, F_SETPIPE_SZ, 4096), 0);
    Process process({"/bin/sh", "-c", "exec \"$0\" capture \"$1\" - 1<>\"$2\"",
                     builtProgram("vboard"), board(), pipe},
                    {"TMPDIR=" + temporary});
    const auto isWriting = [&] {
        int waiting = 0;
        return ioctl(reader, FIONREAD, &waiting) == 0 && waiting > 0;
    };
    ASSERT_TRUE(comesTrue(isWriting)) << process.errors();
    EXPECT_FALSE(fs::is_empty(temporary));
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().exitCode, 128 + SIGTERM);
    EXPECT_TRUE(fs::is_empty(temporary)) << "a copy of the board has its passwords";
    close(reader);
}

TEST_F(TwinCommandsTest, NothingIsSavedOnTheBoardItself) {
    expectFailure(1, "/tmp/bsp/x would be on the board, where /tmp/bsp is the board's own; choose",
                  {"capture", board(), "/tmp/bsp/x"});
}

TEST_F(TwinCommandsTest, TheContentOfFlashGoesAlong) {
    vboard({"set", board(), "flash.12.content@0x20000=00112233"});
    const std::string unit = vboard({"capture", board(), "-", "--with-flash"});
    std::ofstream(document()) << unit;
    EXPECT_EQ(answer({"create", "--from", document(), path("twin")}).err, "");
    EXPECT_EQ(vboard({"get", path("twin"), "flash.12.content@0x20000+4"}), "00112233\n");
}

TEST_F(TwinCommandsTest, WhatIsNoUnitIsRefused) {
    std::ofstream(document()) << "{\"format\": \"other\"}";
    expectFailure(1, document(), {"create", "--from", document(), path("twin")});
    EXPECT_FALSE(fs::exists(path("twin")));
    expectFailure(2, "excludes", {"create", "--from", document(), "--model", "0x0709", path("x")});
    expectFailure(2, "--from excludes --cmdline",
                  {"create", "--from", document(), "--cmdline", "x", path("x")});
    expectFailure(1, "cannot read " + path("none"), {"create", "--from", path("none"), path("x")});
}

} // namespace
