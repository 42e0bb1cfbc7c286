// `vboard run`. These tests are not for emulated builds, whose programs cannot execute each other.

#include "tests/virtual_board/command_test.h"

#include <chrono>
#include <csignal>

namespace {

namespace fs = std::filesystem;

class RunTest : public CommandTest {
  protected:
    ProcessResult onBoard(const Words &program, const Environment &environment = {}) const {
        Words words = {"run", board(), "--"};
        words.insert(words.end(), program.begin(), program.end());
        return answer(words, environment);
    }
};

TEST_F(RunTest, AProgramRunsOnTheBoard) {
    EXPECT_EQ(onBoard({builtProgram("show_device_id")}).out, "0x0709\n");
    EXPECT_EQ(onBoard({"cat", "/proc/cmdline"}).out,
              "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12\n");
    EXPECT_EQ(
        onBoard({"sh", "-c", "echo hello > /tmp/bsp/note; ls /tmp/bsp; cat /tmp/bsp/note"}).out,
        "devId\nnote\nhello\n");
    EXPECT_TRUE(fs::exists(board() + "/root/tmp/bsp/note"));
}

TEST_F(RunTest, RmIsTheSystemsOnTheBoard) {
    const ProcessResult result = onBoard({"sh", "-c",
                                          "cd /tmp/bsp && touch a b && ln -s b link && rm link && "
                                          "rm a && rm -v ../bsp/../bsp/b; rm none"});
    EXPECT_EQ(result.out, "removed '../bsp/../bsp/b'\n");
    EXPECT_EQ(result.err, "rm: cannot remove 'none': No such file or directory\n");
    EXPECT_EQ(onBoard({"rm", "-f", "/dev/mtd4"}).err,
              "rm: cannot remove '/dev/mtd4': Operation not permitted\n");
    EXPECT_TRUE(fs::exists(board() + "/root/dev/mtd4"));
}

TEST_F(RunTest, ANameStandsForTheProgramThatTheBoardFinds) {
    const std::string folder = path("programs");
    fs::create_directory(folder);
    fs::copy_file(builtProgram("static_program"),
                  folder + "/flash_erase"); // which could not be on it
    const ProcessResult result = onBoard({"flash_erase", "-q", "/dev/mtd4", "0", "1"},
                                         {"PATH=" + folder + ":/usr/bin:/bin"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(vboard({"get", board(), "flash.4.erase-counts"}), "min=0 max=1 total=1\n");
}

TEST_F(RunTest, TheProgramsArgumentsAndExitCodeAreItsOwn) {
    EXPECT_EQ(onBoard({"printf", "%s|", "--help", "--", "-x", "", "[a,b]"}).out,
              "--help|--|-x||[a,b]|");
    EXPECT_EQ(onBoard({"sh", "-c", "exit 42"}).exitCode, 42);
    EXPECT_EQ(onBoard({"sh", "-c", "kill -TERM $$"}).exitCode, 128 + SIGTERM);
}

TEST_F(RunTest, APathRelativeToTheCallerIsMadeAbsolute) {
    const ProcessResult result =
        run({"sh", "-c", "cd \"$1\" && \"$2\" run board -- sh -c 'cd / && cat /proc/cmdline'", "sh",
             path(""), builtProgram("vboard")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, 7), "console");
}

TEST_F(RunTest, AProgramThatCannotStartIsCode3) {
    ProcessResult result = onBoard({"no-such-program"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "vboard: cannot start no-such-program: No such file or directory\n");
    result = onBoard({"/etc"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "vboard: cannot start /etc: Permission denied\n");
}

TEST_F(RunTest, AnEmptyEnvironmentWillDo) {
    const ProcessResult result =
        run({"env", "-i", builtProgram("vboard"), "run", board(), "--", "sh", "-c",
             "cat /proc/cmdline; flash_erase -q /dev/mtd4 0 1"});
    EXPECT_EQ(result.out.substr(0, 7), "console") << result.err;
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(RunTest, ProgramsThatTheBoardDoesNotConcernBehaveAsWithoutIt) {
    std::ofstream(path("file")) << "some text\nof two lines\n";
    const Words programs[] = {
        {"cat", path("file")},
        {"cat", path("none")},
        {"ls", "-lA", path("")},
        {"sh", "-c",
         "cd '" + path("") + "' && wc -l < file && rm file2; mkdir -p d && ls; rmdir d"},
        {"sh", "-c", "sleep 0; head -c 100 /dev/zero | wc -c; exit 7"},
        {"stat", "-c", "%n %s %i", "/etc/passwd", "/tmp/bspNoSuchFile"},
        {"find", "/etc/default", "-type", "f"},
        {"sort", "-r", "/etc/passwd"},
    };
    for (const Words &program : programs) {
        const ProcessResult alone = run(program);
        const ProcessResult onTheBoard = onBoard(program);
        EXPECT_EQ(onTheBoard.out, alone.out) << program[0];
        EXPECT_EQ(onTheBoard.err, alone.err) << program[0];
        EXPECT_EQ(onTheBoard.exitCode, alone.exitCode) << program[0];
    }
    // None of the above touched the board, but for the sleep.
    EXPECT_EQ(linesOf(vboard({"trace", board()})).size(), 1u) << vboard({"trace", board()});
}

TEST_F(RunTest, VirtualTimeHoldsForWholeShellScripts) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(onBoard({"sh", "-c", "sleep 300; sleep 300"}).exitCode, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_EQ(vboard({"get", board(), "clock"}), "600.000000000\n");
}

TEST_F(RunTest, TheSystemClockThatAProgramSetsIsTheBoards) {
    EXPECT_EQ(onBoard({"date", "-u", "-s", "@2570445296", "+%F"}).out, "2051-06-15\n");
    EXPECT_EQ(onBoard({"date", "-u", "+%F"}).out, "2051-06-15\n");
    EXPECT_NE(run({"date", "-u", "+%F"}).out, "2051-06-15\n");
    EXPECT_NE(vboard({"get", board(), "system-clock"}), "host\n");
    EXPECT_NE(onBoard({"date", "-u", "-s", "@-1"}).exitCode, 0);
    EXPECT_EQ(onBoard({"date", "-u", "+%F"}).out, "2051-06-15\n");
}

TEST_F(RunTest, ShellsFindTheToolsOfTheBoard) {
    const ProcessResult result =
        onBoard({"sh", "-c", "flash_erase -q /dev/mtd12 0 0 && stty -F /dev/ttyS0 9600"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(vboard({"get", board(), "flash.12.erase-counts", "console.speed"}),
              "min=1 max=1 total=324\n9600\n");
}

TEST_F(RunTest, CommandsWorkOnABoardFromAProgramOfIt) {
    vboard({"fault", board(), "add", "--device", "/proc/cmdline", "--op", "read", "--effect",
            "short=2"});
    const std::string told = vboard({"get", board(), "cmdline"});
    const ProcessResult result = onBoard({builtProgram("vboard"), "get", board(), "cmdline"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, told);
    EXPECT_EQ(vboard({"trace", board()}), "");
}

TEST_F(RunTest, TellsWhenTheOutputCannotBeWritten) {
    const ProcessResult result =
        run({"sh", "-c", "\"$@\" > /dev/full", "sh", builtProgram("vboard"), "list-models"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "vboard: cannot write the output\n");
}

} // namespace
