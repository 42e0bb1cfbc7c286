// Several processes on one board, several boards side by side.

#include "bsp.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <poll.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class ProcessesTest : public VirtualBoardTest {
  protected:
    /** Whether the board's lock can be taken at once. */
    bool isLockFree() const {
        const int fd = open((boardFolder() + "/lock").c_str(), O_RDWR | O_CLOEXEC);
        const bool isFree = flock(fd, LOCK_EX | LOCK_NB) == 0;
        close(fd);
        return isFree;
    }
};

TEST_F(ProcessesTest, NoRequestOfManyProcessesIsLost) {
    constexpr uint32_t kProcesses = 8;
    constexpr uint32_t kRequests = 200;
    constexpr uint32_t kFirst = 40; // registers that nothing drives
    std::map<pid_t, uint32_t> registers;
    for (uint32_t i = 0; i < kProcesses; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            int32_t failures = 0;
            for (uint32_t value = 1; value <= kRequests; ++value)
                failures += bspCpldSet(kFirst + i, value) == BSP_OK ? 0 : 1;
            _exit(failures == 0 ? 0 : 1);
        }
        registers[child] = kFirst + i;
    }
    for (const auto &[child, reg] : registers) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(devices().cpld.reg[reg], kRequests);
    }
    ASSERT_EQ(board().trace.total, kProcesses * kRequests);
    std::map<pid_t, uint32_t> seen;
    for (uint64_t i = 0; i < board().trace.total; ++i) {
        const vb::TraceRecord &record = vb::traceAt(board().trace, i);
        EXPECT_EQ(record.offset, registers.at(record.pid));
        EXPECT_EQ(record.value, ++seen[record.pid]); // each process's requests are in their order
    }
    EXPECT_TRUE(isLockFree());
}

TEST_F(ProcessesTest, ARequestWaitsForTheLock) {
    const int lock = open((boardFolder() + "/lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const pid_t child = fork();
    if (child == 0)
        _exit(bspCpldSet(10, 1) == BSP_OK ? 0 : 1);
    const timespec halfASecond = {0, 500000000};
    ppoll(nullptr, 0, &halfASecond, nullptr); // a wait that is no sleep of the board
    EXPECT_EQ(board().trace.total, 0u);
    flock(lock, LOCK_UN); // which the child shares
    close(lock);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(board().trace.total, 1u);
}

TEST_F(ProcessesTest, AKilledProcessLeavesTheLockFree) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const vb::BoardLock lock(*vb::attachedFolder());
        (void)!write(ready[1], "x", 1);
        for (;;)
            pause();
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_FALSE(isLockFree());
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(isLockFree());
    EXPECT_EQ(bspCpldSet(10, 1), BSP_OK);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(ProcessesTest, ABoardSurvivesProcessesKilledAmidTheirRequests) {
    for (int round = 0; round < 5; ++round) {
        const uint64_t before = board().trace.total;
        const pid_t child = fork();
        if (child == 0) {
            for (uint32_t value = 0;; ++value)
                bspCpldSet(10, value & 0xFFFF);
        }
        while (*const_cast<volatile uint64_t *>(&board().trace.total) < before + 20)
            sched_yield();
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        EXPECT_TRUE(isLockFree());
        EXPECT_EQ(bspCpldSet(11, 0x1000u + static_cast<uint32_t>(round)), BSP_OK);
        EXPECT_EQ(devices().cpld.reg[11], 0x1000 + round);
    }
}

TEST_F(ProcessesTest, AnUnmodifiedProgramRunsOnTheBoard) {
    const ProcessResult shown = runOnBoard(boardFolder(), {builtProgram("show_device_id")});
    EXPECT_EQ(shown.out, "0x0709\n");
    EXPECT_EQ(shown.err, "");
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_EQ(trace(), (std::vector<std::string>{"open /tmp/bsp/devId",
                                                 "CPLD read  reg 1 (device id) = 0x0709"}));
    uint32_t devId = 0;
    std::ifstream(boardFile("/tmp/bsp/devId"))
        .read(reinterpret_cast<char *>(&devId), sizeof(devId));
    EXPECT_EQ(devId, 0x0709u); // in the byte order of the build's machine
}

TEST_F(ProcessesTest, WithoutABoardTheProgramFindsNone) {
    const ProcessResult shown = run({builtProgram("show_device_id")});
    EXPECT_NE(shown.exitCode, 0);
    EXPECT_EQ(shown.out.find("0x"), std::string::npos);
    EXPECT_EQ(trace(), std::vector<std::string>{});
}

TEST_F(ProcessesTest, BoardsSideBySideAreStrangers) {
    const TemporaryFolder folder;
    const std::string other = folder.path() + "/board";
    vb::BoardOptions options;
    options.devId = 0x0109;
    vb::FolderError error = {};
    ASSERT_TRUE(vb::createBoard(other, options, error)) << error.text;
    const std::vector<std::string> program = {builtProgram("show_device_id")};
    Process onFirst(program, boardEnvironment(boardFolder()));
    Process onSecond(program, boardEnvironment(other));
    EXPECT_EQ(onFirst.wait().out, "0x0709\n");
    EXPECT_EQ(onSecond.wait().out, "0x0109\n");
    EXPECT_EQ(trace().size(), 2u);
    EXPECT_EQ(runOnBoard(boardFolder(), program).out, "0x0709\n"); // from its own cache
    EXPECT_EQ(trace(), std::vector<std::string>{"open /tmp/bsp/devId"});
}

TEST_F(ProcessesTest, AProgramIsNotLetLooseWhenItsBoardIsBad) {
    const Environment environment = boardEnvironment(boardFolder());
    std::filesystem::resize_file(boardFolder() + "/board.state", 100);
    vb::detachBoard(); // the test itself must not touch the truncated mapping
    const ProcessResult shown = run({builtProgram("show_device_id")}, environment);
    EXPECT_EQ(shown.exitCode, 125);
    EXPECT_EQ(shown.out, "");
    EXPECT_NE(shown.err.find("is damaged"), std::string::npos) << shown.err;
}

} // namespace
